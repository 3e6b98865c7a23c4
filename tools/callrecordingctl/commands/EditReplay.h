// How an edit would change the decisions on the calls of call records.

#ifndef CALLRECORDINGCTL_COMMANDS_EDITREPLAY_H
#define CALLRECORDINGCTL_COMMANDS_EDITREPLAY_H

#include <string>
#include <vector>

#include "Names.h"
#include "administration/edit/RuleEdit.h"
#include "records/counting/Replay.h"

namespace callrecordingctl {

/// Call records, and how they are read.
struct CallFiles {
    std::vector<std::string> paths;
    CallFormat format;
};

/// Decides the calls by the rules before the edit, and compares with the rules after it. Throws a
/// Failure if a file cannot be used.
ReplayReport ReplayEdit(CallFiles const& calls, RuleEdit& edit);

} // namespace callrecordingctl

#endif
