// The options of add and modify for the fields of a rule.

#ifndef CALLRECORDINGCTL_COMMANDS_RULEFIELDS_H
#define CALLRECORDINGCTL_COMMANDS_RULEFIELDS_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "CommandLine.h"
#include "Rules.h"
#include "administration/edit/SideFields.h"

namespace callrecordingctl {

struct RuleFields {
    SideFields from;
    SideFields to;
    std::optional<std::string> recordTo;
    std::optional<std::string> duration;
    std::optional<std::string> description;
    std::optional<CallRecordingTypes> recordingType;
    std::optional<std::int32_t> state;

    bool AreGiven() const;
};

/// Adds an option for each field. For a new rule their help names the defaults.
void AddRuleFields(CLI::App& command, RuleFields& fields, bool isNew);

/// Checks the given fields and sets them in rule. Throws a Failure that names the option if the
/// value of one is malformed.
void Apply(RuleFields const& fields, Rule& rule);

/// What is worth saying about fields that rule has been given: that an escape is stored as a code,
/// that a pattern is surely not meant, what a ban takes.
std::vector<std::string> NotesOn(RuleFields const& fields, Rule const& rule);

/// Notes, after where, patterns of rule that are well formed but surely not meant.
void NoteSuspicions(Rule const& rule, std::string const& where);

/// Adds --everyone, without which no rule is made that records every call.
void AddEveryone(CLI::App& command, bool& everyone);

/// Throws a Failure if rule records every call and --everyone was not given.
void RequireEveryone(Rule const& rule, bool everyone);

} // namespace callrecordingctl

#endif
