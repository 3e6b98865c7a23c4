// Decides a party call by typed questions: up to two for each side, so up to four for a call.

#include "calls/RuleSet.h"

#include <utility>

namespace CallRecordingUtils {
namespace {

constexpr std::uint16_t BitOfPair(CallType caller, CallType called) {
    return static_cast<std::uint16_t>(1U << (4 * (caller & 3) + (called & 3)));
}

/// The pairs of call types of the rules that a typed question finds.
constexpr std::uint16_t PairsFoundBy(CallType caller, CallType called) {
    return BitOfPair(caller, called) | BitOfPair(caller, CALL_TYPE_ANY) |
           BitOfPair(CALL_TYPE_ANY, called) | BitOfPair(CALL_TYPE_ANY, CALL_TYPE_ANY);
}

/// Calls ask(caller, called) with each pair of typed sides, those first that have most in common
/// with all the others.
template <typename Ask>
void ForEachTypedCall(PartyCall const& call, Ask ask) {
    SideTexts::TypedSides const callers = call.caller.Typed();
    SideTexts::TypedSides const calleds = call.called.Typed();
    for (std::size_t const shift : {0U, 1U})
        for (std::size_t i = 0; i < callers.count; ++i)
            if (std::size_t const j = i ^ shift; j < calleds.count)
                ask(callers.sides[i], calleds.sides[j]);
}

} // namespace

bool Takes(CallRecordingRuleParams const& rule, PartyCall const& call) {
    bool takes = false;
    ForEachTypedCall(call, [&](TypedText const& caller, TypedText const& called) {
        takes = takes || Takes(rule, Call(caller, called));
    });
    return takes;
}

RuleSet::RuleSet(std::vector<CallRecordingRuleParams> rules) : rules_(std::move(rules)) {
    for (CallRecordingRuleParams& rule : rules_) {
        order_.push_back(&rule);
        if (rule.recording_rule_state == RULE_ENABLED)
            typePairs_ |= BitOfPair(rule.caller_call_type, rule.called_call_type);
    }
    index_.Build(order_);
}

// The earliest rule of all typed questions is the first one that takes the call. A question is left
// out when every rule that it could find is of a pair of types for which another one was asked.
CallRecordingRuleParams const* RuleSet::Deciding(PartyCall const& call) const {
    CallRecordingRuleParams const* deciding = nullptr;
    unsigned open = typePairs_;
    ForEachTypedCall(call, [&](TypedText const& caller, TypedText const& called) {
        unsigned const found = PairsFoundBy(caller.type, called.type);
        if ((open & found) == 0)
            return;
        open &= ~found;
        CallRecordingRuleParams const* const rule = Deciding(Call(caller, called));
        if (rule != nullptr && (deciding == nullptr || rule < deciding))
            deciding = rule;
    });
    return deciding;
}

} // namespace CallRecordingUtils
