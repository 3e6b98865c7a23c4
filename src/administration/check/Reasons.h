// Why a rule never decides, and why a question about rules was left undecided, in words.

#ifndef ADMINISTRATION_CHECK_REASONS_H
#define ADMINISTRATION_CHECK_REASONS_H

#include <string>

#include "analysis/RuleAnalysis.h"
#include "model/RuleList.h"

namespace CallRecordingUtils {

/// What report says about a rule of rules that decides nothing, for the end of a sentence about it:
/// "can never decide: rule 3 matches every call that it matches". Empty when the rule decides, is
/// disabled, or nothing is known.
std::string WhyItDecidesNothing(RuleReport const& report, RuleList const& rules);

std::string WhyUndecided(RuleList const& rules);

} // namespace CallRecordingUtils

#endif
