// The rule file for the commands: its path, whether it exists, and its rules.

#ifndef CALLRECORDINGCTL_RULES_H
#define CALLRECORDINGCTL_RULES_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "Names.h"
#include "model/RuleList.h"

namespace callrecordingctl {

/// The path of the rule file in directory or, without one, in the configuration directory that the
/// library would use.
std::string RuleFilePath(std::optional<std::string> const& directory);

/// Throws a Failure when the directory of the rule file at path does not exist.
void RequireDirectory(std::string const& path);

/// Whether there is a rule file at path. Throws a Failure when its directory does not exist.
bool HasRuleFile(std::string const& path);

/// The rules of the file at path. A file that is missing has none, which is said on standard error.
/// Throws a Failure with path, line and reason.
RuleList LoadRules(std::string const& path);

/// The same, with the digest of the file; of the empty text when there is no file.
RuleList LoadRules(std::string const& path, std::string& digest);

/// How the command line names a rule: by its identifier, or as #5 by its position.
struct RuleName {
    std::int32_t number = 0;
    bool isPosition = false;
};

/// The place of the rule with this name. Throws a Failure when there is no such rule, or more than
/// one.
std::size_t FindRule(RuleList const& rules, RuleName name);

} // namespace callrecordingctl

#endif
