// Replays call records with the rules before and after an edit.

#include "commands/EditReplay.h"

#include "commands/RunReplay.h"

namespace callrecordingctl {

ReplayReport ReplayEdit(CallFiles const& calls, RuleEdit& edit) {
    Replay::Options options;
    options.format = calls.format;
    return RunReplay(calls.paths, edit.Before(), &edit.After(), options);
}

} // namespace callrecordingctl
