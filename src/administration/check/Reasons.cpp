// Words reasons.

#include "administration/check/Reasons.h"

#include <algorithm>

#include <fmt/format.h>

#include "administration/inspection/RuleNames.h"
#include "validation/SidePattern.h"

namespace CallRecordingUtils {
namespace {

std::string WhyHidden(std::vector<std::size_t> const& takers, RuleList const& rules) {
    if (takers.empty())
        return "can never decide: rules before it take all its calls";
    std::string const names = RulesText(rules, takers);
    return takers.size() == 1
               ? fmt::format("can never decide: {} matches every call that it matches", names)
               : fmt::format("can never decide: {} together take all its calls", names);
}

} // namespace

std::string WhyItDecidesNothing(RuleReport const& report, RuleList const& rules) {
    char const* const side = report.side == WhichSide::Caller ? "from" : "to";
    switch (report.standing) {
    case RuleReport::kHidden: return WhyHidden(report.takenBy, rules);
    case RuleReport::kMatchesNothing:
        return fmt::format("can never decide: nothing satisfies its {} side", side);
    case RuleReport::kNotAnalysable:
        return fmt::format("not analysable, since its {} pattern is malformed", side);
    case RuleReport::kUndecided:
        return "whether it decides calls is undecided: " + WhyUndecided(rules);
    case RuleReport::kDecides:
    case RuleReport::kOff: break;
    }
    return "";
}

std::string WhyUndecided(RuleList const& rules) {
    auto const isMalformed = [](Rule const& rule) {
        return rule.recording_rule_state == RULE_ENABLED &&
               (ExplainStored(rule.caller_pattern, rule.caller_call_type) ||
                ExplainStored(rule.called_pattern, rule.called_call_type));
    };
    auto const found = std::find_if(rules.begin(), rules.end(), isMalformed);
    if (found == rules.end())
        return "the rules are too entangled for the memory that the analysis may take";
    return fmt::format("it depends on malformed patterns, such as that of rule {}; "
                       "\"callrecordingctl check\" says where",
                       found->callrecordingrule_id);
}

} // namespace CallRecordingUtils
