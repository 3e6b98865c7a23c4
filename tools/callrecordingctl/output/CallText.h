// Calls and decisions of the analysis, in words and in JSON.

#ifndef CALLRECORDINGCTL_OUTPUT_CALLTEXT_H
#define CALLRECORDINGCTL_OUTPUT_CALLTEXT_H

#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "CommandLine.h"
#include "Names.h"
#include "Rules.h"
#include "analysis/RuleAnalysis.h"

namespace callrecordingctl {

/// The kind of calls as --calls names it: typed or parties.
char const* CallsName(CallKind calls);

/// "from 201 to sip alice@pbx"; the call type is named unless it is number.
std::string CallText(ExampleCall const& call);

/// The command that asks decide about this very call: with types where an address alone would be
/// read as another call, and with the configuration directory of context.
std::string DecideCommand(ExampleCall const& call, CallKind calls, Context const& context);

nlohmann::ordered_json CallToJson(ExampleCall const& call);

/// The identifiers of the rules at places, as a JSON array.
nlohmann::ordered_json IdsToJson(RuleList const& rules, std::vector<std::size_t> const& places);

/// The identifier of the rule at place, or null.
nlohmann::ordered_json IdToJson(RuleList const& rules, std::optional<std::size_t> place);

nlohmann::ordered_json DifferencesToJson(std::vector<Difference> const& differences,
                                         RuleList const& here, RuleList const& there);

/// How list decides: recorded by which rule and how, or not recorded.
std::string DecisionText(RuleList const& list, std::optional<std::size_t> place);

/// The patterns that cover exactly a set of calls, a line each.
void PrintPatterns(CallPatterns const& calls);
nlohmann::ordered_json PatternsToJson(CallPatterns const& calls);

nlohmann::ordered_json CallsToJson(std::vector<ExampleCall> const& calls);

} // namespace callrecordingctl

#endif
