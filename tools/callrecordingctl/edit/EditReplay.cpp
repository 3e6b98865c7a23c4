// Decides calls by the rules before and after an edit.

#include "edit/EditReplay.h"

#include "output/RuleText.h"
#include "replay/RunReplay.h"

namespace callrecordingctl {

EditReplay ReplayEdit(std::vector<std::string> const& calls, RuleEdit& edit) {
    EditReplay replay{edit.Before(), edit.After(), {}};
    Replay::Options options;
    options.parseCallType = ParseCallType;
    replay.report = RunReplay(calls, replay.before, &replay.after, options);
    return replay;
}

} // namespace callrecordingctl
