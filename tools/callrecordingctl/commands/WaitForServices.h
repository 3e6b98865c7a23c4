// After an edit: waits until the services decide by the new rules.

#ifndef CALLRECORDINGCTL_COMMANDS_WAITFORSERVICES_H
#define CALLRECORDINGCTL_COMMANDS_WAITFORSERVICES_H

#include <optional>
#include <string>

namespace callrecordingctl {

/// Waits up to a second for the services that read the rule file at path. Returns a note on which
/// of them decide by the rules that are in it now; nothing when no service reads this file.
std::optional<std::string> WhoDecidesByThem(std::string const& path);

} // namespace callrecordingctl

#endif
