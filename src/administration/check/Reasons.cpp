// Words reasons.

#include "administration/check/Reasons.h"

#include <fmt/format.h>

#include "administration/inspection/RuleNames.h"

namespace CallRecordingUtils {
namespace {

std::string WhyHidden(RuleReport const& report, RuleList const& rules) {
    std::vector<std::size_t> const& takers = report.takenBy;
    if (takers.empty())
        return "can never decide: rules before it take all its calls";
    std::string const names = RulesText(rules, takers);
    if (takers.size() == 1)
        return fmt::format("can never decide: {} matches every call that it matches", names);
    return fmt::format("can never decide: {} together match every call that it matches{}", names,
                       report.isComplete ? "" : " (fewer of them might be enough)");
}

} // namespace

std::string WhyItDecidesNothing(RuleReport const& report, RuleList const& rules) {
    char const* const side = report.side == WhichSide::Caller ? "from" : "to";
    switch (report.standing) {
    case RuleReport::kHidden: return WhyHidden(report, rules);
    case RuleReport::kMatchesNothing:
        return fmt::format("can never decide: nothing satisfies its {} side", side);
    case RuleReport::kUndecided:
        return "whether it decides calls is undecided: " + WhyUndecided(rules, report.why);
    case RuleReport::kOff: return "is off, and decides no call";
    case RuleReport::kDecides: break;
    }
    return "";
}

std::string WhyUndecided(RuleList const& rules, std::optional<UndecidedReason> const& why) {
    if (!why || why->reason == UndecidedReason::kLongSearch)
        return "the search for the answer takes too much time or memory";
    std::string const whose =
        why->rule ? fmt::format("rule {}", rules[*why->rule].callrecordingrule_id) : "the claim";
    char const* const side = why->side == WhichSide::Caller ? "from" : "to";
    if (why->reason == UndecidedReason::kLargePattern)
        return fmt::format(
            "it depends on the {} pattern of {}, which takes too much memory to analyse", side,
            whose);
    return fmt::format("it depends on the {} pattern of {}, whose item list is malformed", side,
                       whose);
}

} // namespace CallRecordingUtils
