// Walks the rules, or asks the index.

#include "analysis/CallDecider.h"

#include <algorithm>

#include "analysis/PartySides.h"
#include "matching/Decision.h"

namespace CallRecordingUtils {
namespace {

// An index costs as much as some hundred walks do.
constexpr std::size_t kWalksBeforeIndex = 100;

bool LooksAtNumber2(CallRecordingRuleParams const& rule) {
    return rule.caller_call_type == CALL_TYPE_NUMBER2 || rule.called_call_type == CALL_TYPE_NUMBER2;
}

/// What decides of a rule; one that looks at no party is off for parties.
CallRecordingRuleParams DecidingPartOf(CallRecordingRuleParams const& rule, CallKind calls) {
    CallRecordingRuleParams part;
    part.caller_pattern = rule.caller_pattern;
    part.caller_call_type = rule.caller_call_type;
    part.called_pattern = rule.called_pattern;
    part.called_call_type = rule.called_call_type;
    part.recording_rule_state = calls == CallKind::Parties && LooksAtNumber2(rule)
                                    ? RULE_DISABLED
                                    : rule.recording_rule_state;
    return part;
}

bool Satisfies(CallSide const& side, RuleSide const& rule) {
    auto const type = static_cast<CallType>(rule.type);
    return side.MaySatisfy(rule.pattern, type) && side.Satisfies(rule.pattern, type);
}

} // namespace

CallDecider::CallDecider(std::vector<CallRecordingRuleParams> const& rules, CallKind calls)
    : calls_(calls) {
    rules_.reserve(rules.size());
    for (CallRecordingRuleParams const& rule : rules)
        rules_.push_back(DecidingPartOf(rule, calls));
    for (CallRecordingRuleParams& rule : rules_)
        pointers_.push_back(&rule);
}

std::optional<std::size_t> CallDecider::PlaceFor(ExampleCall const& call) {
    if (++asked_ == kWalksBeforeIndex)
        index_.Build(pointers_);
    if (calls_ == CallKind::Typed)
        return TypedPlaceFor(call.caller, call.called);
    std::optional<std::size_t> first;
    for (CallParty const& caller : TypedSidesOf(call.caller))
        for (CallParty const& called : TypedSidesOf(call.called))
            if (auto const place = TypedPlaceFor(caller, called);
                place && (!first || place < first))
                first = place;
    return first;
}

std::optional<std::size_t> CallDecider::TypedPlaceFor(CallParty const& caller,
                                                      CallParty const& called) {
    Call const call(caller.params, caller.type, called.params, called.type);
    CallRecordingRuleParams const* const rule = DecidingRecord(pointers_, index_, call);
    return rule != nullptr ? std::optional(static_cast<std::size_t>(rule - rules_.data()))
                           : std::nullopt;
}

std::optional<std::size_t> CallDecider::PlaceWithout(std::size_t place, ExampleCall const& call) {
    std::int32_t const state = rules_[place].recording_rule_state;
    LeaveOut(place);
    auto const without = PlaceFor(call);
    rules_[place].recording_rule_state = state;
    return without;
}

/// A decision looks at the state of a record when it comes to it, so the index need not know.
void CallDecider::LeaveOut(std::size_t place) {
    rules_[place].recording_rule_state = RULE_DISABLED;
}
void CallDecider::TakeIn(std::size_t place) {
    rules_[place].recording_rule_state = RULE_ENABLED;
}

bool Satisfies(CallParty const& party, RuleSide const& rule, CallKind calls) {
    if (calls == CallKind::Typed)
        return Satisfies(CallSide(party.params, party.type), rule);
    if (rule.type == CALL_TYPE_NUMBER2)
        return false;
    std::vector<CallParty> const sides = TypedSidesOf(party);
    return std::any_of(sides.begin(), sides.end(), [&rule](CallParty const& side) {
        return Satisfies(CallSide(side.params, side.type), rule);
    });
}

std::optional<std::size_t> DecidingPlace(std::vector<CallRecordingRuleParams> const& rules,
                                         ExampleCall const& call, CallKind calls) {
    for (std::size_t place = 0; place < rules.size(); ++place) {
        RuleSides const sides = SidesOf(rules[place]);
        if (rules[place].recording_rule_state == RULE_ENABLED &&
            Satisfies(call.caller, sides.caller, calls) &&
            Satisfies(call.called, sides.called, calls))
            return place;
    }
    return std::nullopt;
}

} // namespace CallRecordingUtils
