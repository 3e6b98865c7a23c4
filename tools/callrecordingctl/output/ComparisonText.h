// How two lists of rules decide calls differently, in words and in JSON.

#ifndef CALLRECORDINGCTL_OUTPUT_COMPARISONTEXT_H
#define CALLRECORDINGCTL_OUTPUT_COMPARISONTEXT_H

#include <cstddef>
#include <string>

#include <nlohmann/json.hpp>

#include "Names.h"
#include "analysis/RuleAnalysis.h"
#include "model/RuleList.h"

namespace callrecordingctl {

/// Whether some pairs of rules are undecided, whether or not others are known to differ.
bool IsIncomplete(Comparison const& comparison);

/// Why the first of these pairs is undecided. REQUIRES: IsIncomplete.
std::string WhyIncomplete(Comparison const& comparison, RuleList const& here,
                          RuleList const& there);

/// same (true, false or null), differences, and the undecided pairs of rules.
nlohmann::ordered_json ComparisonToJson(Comparison const& comparison, RuleList const& here,
                                        RuleList const& there);

/// Two lists compared for the kind of calls that is asked about, and for the other one.
struct ComparedCalls {
    CallKind kind;
    Comparison asked;
    Comparison other;

    /// Whether other pairs of rules decide calls of the other kind differently.
    bool AreOtherwise() const;
};

/// How many pairs of rules with one that has changed a text shows. JSON has all.
inline constexpr std::size_t kPairsOfRuleShown = 10;

ComparedCalls CompareCalls(RuleList const& here, RuleList const& there, std::size_t mostPairsOfRule,
                           std::size_t memory = kAnalysisMemory, CallKind kind = CallKind::Typed);

/// "103 pairs", or "at least 103 pairs" where they are not all.
std::string PairsText(std::size_t count, bool areAll);

/// "typed call" or "call of parties".
char const* CallOf(CallKind kind);

/// As ComparisonToJson, and other_calls: null, or what is otherwise for them.
nlohmann::ordered_json ToJson(ComparedCalls const& calls, RuleList const& here,
                              RuleList const& there);

/// Prints which calls are decided differently, now, if the edit is made, or then.
void PrintCallChanges(ComparedCalls const& calls, RuleList const& before, RuleList const& after,
                      bool isDryRun = true);

} // namespace callrecordingctl

#endif
