// Why a rule never decides, and why a question about rules was left undecided, in words.

#ifndef ADMINISTRATION_CHECK_REASONS_H
#define ADMINISTRATION_CHECK_REASONS_H

#include <optional>
#include <string>

#include "analysis/RuleAnalysis.h"
#include "model/RuleList.h"

namespace CallRecordingUtils {

/// Returns why a rule of rules decides nothing, by its report, as the end of a sentence that begins
/// with the rule: "can never decide: rule 3 matches every call that it matches". Where that is
/// undecided it is a sentence of its own. Empty when the rule decides.
std::string WhyItDecidesNothing(RuleReport const& report, RuleList const& rules);

/// Returns why a question about rules could not be answered.
std::string WhyUndecided(RuleList const& rules, std::optional<UndecidedReason> const& why);

} // namespace CallRecordingUtils

#endif
