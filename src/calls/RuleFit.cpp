// Judges each side of a rule by itself.

#include "calls/RuleFit.h"

#include "calls/Miss.h"
#include "model/RuleSides.h"
#include "model/SipAddress.h"
#include "validation/SidePattern.h"

namespace CallRecordingUtils {
namespace {

/// The pattern that the whole text is matched with: a SIP pattern without a port takes every port.
/// Empty when it matches nothing.
std::string MatchedPattern(RuleSide const& side) {
    std::string pattern(side.pattern);
    if (side.type != CALL_TYPE_SIP)
        return pattern;
    auto const parts = SplitSipAddress(side.pattern);
    if (!parts)
        return "";
    if (!parts->HasPort())
        pattern.append(parts->port ? "*" : ":*");
    return pattern;
}

char const* WhyNotSeen(SideTexts const& side, CallType ruleType) {
    if (!side.IsParty())
        return " is of another call type";
    switch (ruleType) {
    case CALL_TYPE_NUMBER: return " is no number";
    case CALL_TYPE_SIP: return " has no host";
    default: return " is never of type number2";
    }
}

SideFit FitOf(RuleSide const& rule, SideTexts const& side, std::string const& name) {
    auto const type = static_cast<CallType>(rule.type);
    auto const text = side.SeenBy(type);
    if (!text)
        return {SideFit::Outcome::NotSeen, 0, 0, name + WhyNotSeen(side, type)};
    if (side.Satisfies(rule.pattern, type))
        return {SideFit::Outcome::Matches, 0, 1, ""};
    std::string const shown =
        rule.pattern.empty() ? "an empty pattern" : ToEntry(std::string(rule.pattern), type);
    std::string const reason = name + " does not match " + shown;
    std::string const pattern = MatchedPattern(rule);
    if (pattern.empty())
        return {SideFit::Outcome::Differs, 0, 0, reason};
    Miss const miss = FindMiss(*text, pattern);
    double const size = static_cast<double>(text->size()) + 1;
    return {SideFit::Outcome::Differs, miss.position, static_cast<double>(miss.position) / size,
            reason + ": " + MissText(side.Shown(type), miss)};
}

std::string Joined(std::string const& a, std::string const& b) {
    return a + (a.empty() || b.empty() ? "" : "; ") + b;
}

} // namespace

RuleFit FitOf(CallRecordingRuleParams const& rule, PartyCall const& call, SideNames names) {
    RuleSides const sides = SidesOf(rule);
    return {rule.recording_rule_state == RULE_ENABLED,
            FitOf(sides.caller, call.caller, names.caller),
            FitOf(sides.called, call.called, names.called)};
}

std::string RuleFit::Reason() const {
    std::string sides = Joined(caller.reason, called.reason);
    if (isEnabled)
        return sides;
    return "disabled; " + (sides.empty() ? "it would match if it were enabled" : sides);
}

std::size_t PlaceOfNearestMiss(RuleSet const& rules, PartyCall const& call) {
    std::size_t place = rules.Rules().size();
    double nearest = -1;
    for (CallRecordingRuleParams const& rule : rules.Rules()) {
        RuleFit const fit = FitOf(rule, call);
        if (fit.Takes() || fit.Nearness() <= nearest)
            continue;
        nearest = fit.Nearness();
        place = rules.PlaceOf(rule);
    }
    return place;
}

} // namespace CallRecordingUtils
