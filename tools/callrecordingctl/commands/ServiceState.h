// Compares what a service decides by with the rule file.

#ifndef CALLRECORDINGCTL_COMMANDS_SERVICESTATE_H
#define CALLRECORDINGCTL_COMMANDS_SERVICESTATE_H

#include <string>

#include "Names.h"
#include "administration/services/Services.h"

namespace callrecordingctl {

enum class ServiceState {
    Current,   ///< It decides by the rules that are in the file.
    Old,       ///< It reads the file, but decides by other rules.
    NoRules,   ///< It reads the file, but has read no rules yet: calls are undecided.
    OtherFile, ///< It reads another file.
    Silent     ///< It could not be asked.
};

/// The digest of the rule file at path; of the empty text when there is no such file. Throws
/// std::runtime_error when it cannot be read.
std::string DigestOfFile(std::string const& path);

ServiceState StateOf(AskedService const& service, std::string const& path,
                     std::string const& digest);

} // namespace callrecordingctl

#endif
