// What an edit would do to the calls of call records.

#ifndef CALLRECORDINGCTL_COMMANDS_EDITREPLAY_H
#define CALLRECORDINGCTL_COMMANDS_EDITREPLAY_H

#include <string>
#include <vector>

#include "Names.h"
#include "administration/edit/RuleEdit.h"
#include "records/counting/Replay.h"

namespace callrecordingctl {

struct EditReplay {
    RuleList before;
    RuleList after;
    ReplayReport report; ///< Of the rules before, compared with those after.
};

/// Replays the call files. Throws a Failure when one of them cannot be used.
EditReplay ReplayEdit(std::vector<std::string> const& calls, RuleEdit& edit);

} // namespace callrecordingctl

#endif
