// Walks the rules, or asks the index.

#include "analysis/CallDecider.h"

#include <algorithm>

#include "calls/SideTexts.h"
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

SideTexts TextsOf(CallParty const& party) {
    return SideTexts(Party{party.params.user, party.params.host, party.params.port});
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
        return PlaceFor(
            Call(call.caller.params, call.caller.type, call.called.params, call.called.type));
    SideTexts const caller = TextsOf(call.caller);
    SideTexts const called = TextsOf(call.called);
    SideTexts::TypedSides const callers = caller.Typed();
    SideTexts::TypedSides const calleds = called.Typed();
    std::optional<std::size_t> first;
    for (std::size_t i = 0; i < callers.count; ++i)
        for (std::size_t j = 0; j < calleds.count; ++j)
            if (auto const place = PlaceFor(Call(callers.sides[i], calleds.sides[j]));
                place && (!first || place < first))
                first = place;
    return first;
}

std::optional<std::size_t> CallDecider::PlaceFor(Call const& call) const {
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

std::vector<std::size_t> CallDecider::PlacesFor(ExampleCall const& call, std::size_t end,
                                                std::size_t most) {
    std::vector<std::size_t> places;
    while (places.size() < most) {
        auto const place = PlaceFor(call);
        if (!place || *place >= end)
            break;
        places.push_back(*place);
        LeaveOut(*place);
    }
    for (std::size_t const place : places)
        TakeIn(place);
    return places;
}

/// A decision looks at the state of a record when it comes to it, so the index need not know.
void CallDecider::LeaveOut(std::size_t place) {
    rules_[place].recording_rule_state = RULE_DISABLED;
}
void CallDecider::TakeIn(std::size_t place) {
    rules_[place].recording_rule_state = RULE_ENABLED;
}

bool Satisfies(CallParty const& party, RuleSide const& rule, CallKind calls) {
    auto const type = static_cast<CallType>(rule.type);
    if (calls == CallKind::Parties)
        return TextsOf(party).Satisfies(rule.pattern, type);
    CallSide const side(party.params, party.type);
    return side.MaySatisfy(rule.pattern, type) && side.Satisfies(rule.pattern, type);
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
