// The fields of a rule that the command line gives, and a rule made of them.

#ifndef CALLRECORDINGCTL_COMMANDS_RULEFIELDS_H
#define CALLRECORDINGCTL_COMMANDS_RULEFIELDS_H

#include <cstdint>
#include <optional>
#include <string>

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

/// Adds an option for each field; those of a new rule say what is taken for what is left out.
void AddRuleFields(CLI::App& command, RuleFields& fields, bool isNew);

/// Checks the fields that are given and sets them in rule. Throws a Failure that names the option
/// of the one that cannot be.
void Apply(RuleFields const& fields, Rule& rule);

/// The flag without which no rule comes to be that records every call.
void AddEveryone(CLI::App& command, bool& everyone);
void RequireEveryone(Rule const& rule, bool everyone);

} // namespace callrecordingctl

#endif
