// Text that can be pasted into a shell.

#ifndef CALLRECORDINGCTL_OUTPUT_SHELLTEXT_H
#define CALLRECORDINGCTL_OUTPUT_SHELLTEXT_H

#include <optional>
#include <string>

#include "CommandLine.h"

namespace callrecordingctl {

/// word, quoted where a shell would read it differently.
std::string ShellWord(std::string const& word);

/// The command that adds rule at position. Nothing when no options can express the rule, because
/// one of its patterns is malformed or empty.
std::optional<std::string> AddCommandFor(Rule const& rule, std::size_t position,
                                         Context const& context);

} // namespace callrecordingctl

#endif
