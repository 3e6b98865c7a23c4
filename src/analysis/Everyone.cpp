// Looks for a call that a rule does not take.

#include "analysis/Everyone.h"

#include "analysis/RuleSpace.h"
#include "matching/PatternMatcher.h"

namespace CallRecordingUtils {
namespace {

/// False of nearly all sides, at next to no cost; true says nothing.
bool MayTakeAll(RuleSide const& side) {
    bool const isTyped = side.type == CALL_TYPE_NUMBER || side.type == CALL_TYPE_SIP ||
                         side.type == CALL_TYPE_NUMBER2;
    return !isTyped && PatternMatcher("0", side.pattern).Matches() &&
           PatternMatcher("zz", side.pattern).Matches();
}

} // namespace

bool TakesEveryone(RuleSides const& sides) {
    if (!MayTakeAll(sides.caller) || !MayTakeAll(sides.called))
        return false;
    RuleSpace space(CallKind::Typed, kAnalysisMemory);
    RuleSpace::RuleId const rule = space.Add(sides);
    RuleSide const any{"?*", CALL_TYPE_ANY};
    RuleSpace::RuleId const all = space.Add({any, any});
    Allowance allowance = space.BeginQuestion();
    return space.IsReadable(rule) &&
           space.Search({all}, {rule}, allowance).outcome == Outcome::None;
}

} // namespace CallRecordingUtils
