// Replays files for a command: all are looked at first, progress is shown, and Ctrl-C ends it
// early.

#ifndef CALLRECORDINGCTL_COMMANDS_RUNREPLAY_H
#define CALLRECORDINGCTL_COMMANDS_RUNREPLAY_H

#include <string>
#include <vector>

#include "Names.h"
#include "records/counting/Replay.h"

namespace callrecordingctl {

/// Replays the files, and those in folders, one after the other; others are rules to compare with,
/// or null. Returns what was counted, also when an interrupt ends it early. Throws an Error, before
/// a call is decided where the file at fault is a regular one.
CountedCalls RunReplay(std::vector<std::string> const& files, RulesOverTime const& rules,
                       RuleList const* others, Replay::Options options);

} // namespace callrecordingctl

#endif
