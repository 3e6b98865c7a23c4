// The part of check that looks at patterns.

#ifndef CALLRECORDINGCTL_COMMANDS_CHECKPATTERNS_H
#define CALLRECORDINGCTL_COMMANDS_CHECKPATTERNS_H

#include <string>
#include <vector>

#include "CommandLine.h"

namespace callrecordingctl {

/// Prints the stored form of each pattern, or what is wrong with it.
ExitCode CheckPatterns(std::vector<std::string> const& patterns, CallType type, bool json);

} // namespace callrecordingctl

#endif
