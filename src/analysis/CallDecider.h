// Decides calls that are put together to look at, as a telephony process would.

#ifndef ANALYSIS_CALLDECIDER_H
#define ANALYSIS_CALLDECIDER_H

#include <cstddef>
#include <list>
#include <optional>
#include <vector>

#include <callrecordingutils/CallRecordingRuleParams.h>

#include "analysis/ExampleCall.h"
#include "matching/RuleIndex.h"
#include "model/RuleSides.h"

namespace CallRecordingUtils {

/// Asks the matcher; when it is asked often, by way of the index that the library has.
class CallDecider {
  public:
    CallDecider(std::vector<CallRecordingRuleParams> const& rules, CallKind calls);
    CallDecider(CallDecider const&) = delete;
    CallDecider& operator=(CallDecider const&) = delete;

    /// The place of the rule that decides call; nothing when none does.
    std::optional<std::size_t> PlaceFor(ExampleCall const& call);
    std::optional<std::size_t> PlaceFor(FoundCall const& call) {
        return PlaceFor(ExampleOf(call, calls_));
    }
    /// The same if the rule at place were not there.
    std::optional<std::size_t> PlaceWithout(std::size_t place, ExampleCall const& call);

    /// The places before end of the rules that take part and match call, ascending, the first most
    /// of them.
    std::vector<std::size_t> PlacesFor(ExampleCall const& call, std::size_t end, std::size_t most);

    /// Leaves the rule at place out of all decisions to come, or takes it in again.
    void LeaveOut(std::size_t place);
    void TakeIn(std::size_t place);
    /// Whether the rule at place takes part.
    bool Has(std::size_t place) const { return rules_[place].recording_rule_state == RULE_ENABLED; }

    /// What it holds for a rule, about: a copy of what decides, and the part of the index.
    static constexpr std::size_t kBytesForRule = 500;

  private:
    std::optional<std::size_t> PlaceFor(Call const& call) const;

    CallKind const calls_;
    std::vector<CallRecordingRuleParams> rules_; // Patterns, types and states.
    std::size_t asked_ = 0;
    std::list<CallRecordingRuleParams*> pointers_; // As the index takes them.
    RuleIndex index_;
};

/// Whether party satisfies rule, one side of a rule. Asks the matcher.
bool Satisfies(CallParty const& party, RuleSide const& rule, CallKind calls);

/// The rule of rules that decides call; nothing when none does. Asks the matcher.
std::optional<std::size_t> DecidingPlace(std::vector<CallRecordingRuleParams> const& rules,
                                         ExampleCall const& call, CallKind calls = CallKind::Typed);

} // namespace CallRecordingUtils

#endif
