// Calls that a rule matches and another one decides, in words and in JSON.

#ifndef CALLRECORDINGCTL_OUTPUT_LOSSTEXT_H
#define CALLRECORDINGCTL_OUTPUT_LOSSTEXT_H

#include <string>

#include <nlohmann/json.hpp>

#include "Names.h"
#include "Rules.h"
#include "analysis/RuleAnalysis.h"

namespace callrecordingctl {

/// "from 0 to 150: rule 2 records it to archive:/a, this rule would record it to archive:/b".
std::string LossText(RuleList const& rules, std::size_t loser, std::size_t taker,
                     ExampleCall const& call);

/// The call, the rule that it goes to, and the outcome by that rule and by the loser.
nlohmann::ordered_json LossToJson(RuleList const& rules, std::size_t loser, std::size_t taker,
                                  ExampleCall const& call);

} // namespace callrecordingctl

#endif
