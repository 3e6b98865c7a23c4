// Commands that a shell can take.

#ifndef CALLRECORDINGCTL_OUTPUT_SHELLTEXT_H
#define CALLRECORDINGCTL_OUTPUT_SHELLTEXT_H

#include <optional>
#include <string>

#include "CommandLine.h"

namespace callrecordingctl {

/// word as a shell reads it, in quotes where it needs them.
std::string ShellWord(std::string const& word);

/// The command that adds rule at position. Nothing when no options say the rule, because a pattern
/// of it is malformed or empty.
std::optional<std::string> AddCommandFor(Rule const& rule, std::size_t position,
                                         Context const& context);

} // namespace callrecordingctl

#endif
