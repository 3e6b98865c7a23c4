// After an edit: waits until the services decide by the new rules.

#ifndef CALLRECORDINGCTL_COMMANDS_WAITFORSERVICES_H
#define CALLRECORDINGCTL_COMMANDS_WAITFORSERVICES_H

#include <string>

namespace callrecordingctl {

/// Waits up to a second for the services that read the rule file at path. Returns a note on which
/// of them decide by the rules that are in it now; when no service reads this file, on what makes
/// telephony processes do it.
std::string WhoDecidesByThem(std::string const& path);

} // namespace callrecordingctl

#endif
