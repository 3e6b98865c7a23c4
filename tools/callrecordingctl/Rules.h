// The rule file for the commands: its path, whether it exists, and its rules.

#ifndef CALLRECORDINGCTL_RULES_H
#define CALLRECORDINGCTL_RULES_H

#include <optional>
#include <string>

#include "Names.h"
#include "administration/selection/RuleSelection.h"
#include "model/RuleList.h"

namespace callrecordingctl {

/// The path of the rule file in directory or, without one, in the configuration directory that the
/// library would use.
std::string RuleFilePath(std::optional<std::string> const& directory);

/// Throws a Failure when the directory of the rule file at path does not exist.
void RequireDirectory(std::string const& path);

/// Throws a Failure when that is because the configuration directory is surely another one.
void RefuseMistakenDirectory(std::string const& path);

/// Whether there is a rule file at path. Throws a Failure when its directory does not exist.
bool HasRuleFile(std::string const& path);

/// The rules of the file at path. A file that is missing has none, which is said on standard error.
/// Throws a Failure with path, line and reason.
RuleList LoadRules(std::string const& path);

/// The same, with the digest of the file; of the empty text when there is no file.
RuleList LoadRules(std::string const& path, std::string& digest);

} // namespace callrecordingctl

#endif
