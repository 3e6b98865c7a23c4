// How two lists of rules decide calls differently, in words and in JSON.

#ifndef CALLRECORDINGCTL_OUTPUT_COMPARISONTEXT_H
#define CALLRECORDINGCTL_OUTPUT_COMPARISONTEXT_H

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

/// Prints which calls are decided differently, now, if the edit is made, or then.
void PrintCallChanges(Comparison const& comparison, RuleList const& before, RuleList const& after,
                      bool isDryRun = true);

} // namespace callrecordingctl

#endif
