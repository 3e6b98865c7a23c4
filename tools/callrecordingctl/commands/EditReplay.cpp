// Decides calls by the rules before and after an edit.

#include "commands/EditReplay.h"

#include "commands/RunReplay.h"
#include "model/CallTypeNames.h"
#include "output/RuleText.h"

namespace callrecordingctl {

EditReplay ReplayEdit(std::vector<std::string> const& calls, RuleEdit& edit) {
    EditReplay replay{edit.Before(), edit.After(), {}};
    Replay::Options options;
    options.parseCallType = ParseCallType;
    replay.report = RunReplay(calls, replay.before, &replay.after, options);
    return replay;
}

} // namespace callrecordingctl
