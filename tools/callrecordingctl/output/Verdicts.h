// Why the rules before the deciding one were passed over by a call.

#ifndef CALLRECORDINGCTL_OUTPUT_VERDICTS_H
#define CALLRECORDINGCTL_OUTPUT_VERDICTS_H

#include <vector>

#include <nlohmann/json.hpp>

#include "Rules.h"
#include "calls/RuleFit.h"

namespace callrecordingctl {

/// How the call fares with each rule in order, up to the one that takes it.
using Verdicts = std::vector<RuleFit>;
Verdicts JudgeUpToDeciding(RuleList const& rules, PartyCall const& call);

/// Prints the rules that the call came nearest to, and how many more there are.
void PrintNearest(Verdicts const& verdicts, RuleList const& rules);

/// Prints all the rules in their order, with descriptions.
void PrintAll(Verdicts const& verdicts, RuleList const& rules);

nlohmann::ordered_json ToJson(Verdicts const& verdicts, RuleList const& rules);

} // namespace callrecordingctl

#endif
