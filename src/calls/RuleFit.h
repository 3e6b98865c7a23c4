// How near a call comes to a rule, and why the rule does not take it.

#ifndef CALLS_RULEFIT_H
#define CALLS_RULEFIT_H

#include <cstddef>
#include <string>

#include <callrecordingutils/CallRecordingRuleParams.h>

#include "calls/RuleSet.h"

namespace CallRecordingUtils {

/// How one side of a call fares with one side of a rule.
struct SideFit {
    enum class Outcome {
        Matches,
        NotSeen, ///< The rule side's type has no text to compare: see SideTexts.
        Differs, ///< The text does not match the pattern.
    };
    Outcome outcome;
    std::size_t
        position;       ///< Differs: the byte of the text where no reading of the pattern goes on.
    double nearness;    ///< From 0 to 1, which is Matches.
    std::string reason; ///< Why it does not match, such as "caller is no number".

    bool Matches() const { return outcome == Outcome::Matches; }
};

/// How a call fares with a rule.
struct RuleFit {
    bool isEnabled;
    SideFit caller;
    SideFit called;

    bool Takes() const { return isEnabled && caller.Matches() && called.Matches(); }
    /// From 0 to 2: what the call satisfies of the rule, whatever the rule's state.
    double Nearness() const { return caller.nearness + called.nearness; }
    /// Why the rule does not take the call; empty when it does.
    std::string Reason() const;
};

/// The names of the two sides in reasons.
struct SideNames {
    char const* caller = "caller";
    char const* called = "called";
};

RuleFit FitOf(CallRecordingRuleParams const& rule, PartyCall const& call, SideNames names = {});

/// The place of the rule that call comes nearest to without being taken, the first one of several;
/// the number of rules when there is none.
std::size_t PlaceOfNearestMiss(RuleSet const& rules, PartyCall const& call);

} // namespace CallRecordingUtils

#endif
