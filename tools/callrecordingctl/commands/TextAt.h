// The rule file as it was at another time, by its history.

#ifndef CALLRECORDINGCTL_COMMANDS_TEXTAT_H
#define CALLRECORDINGCTL_COMMANDS_TEXTAT_H

#include <cstdint>
#include <optional>
#include <string>

#include "CommandLine.h"
#include "Rules.h"

namespace callrecordingctl {

/// The text of the rule file at path as it was then, in seconds since 1970. Says where the history
/// does not reach that far, or cannot tell when a change from outside happened. Throws a Failure if
/// that text is not kept.
std::string TextAt(std::string const& path, std::int64_t seconds);

/// The rules of the file now or, where at has a value, as they were then, and the digest of the
/// file.
RuleList RulesAt(std::string const& path, std::optional<std::int64_t> at, std::string& digest);

/// --at WHEN.
CLI::Option* AddAt(CLI::App& command, std::string const& help, std::optional<std::int64_t>& at);

} // namespace callrecordingctl

#endif
