// A list of rules that no longer changes, and what it says about calls.

#ifndef CALLS_RULESET_H
#define CALLS_RULESET_H

#include <cstddef>
#include <cstdint>
#include <list>
#include <vector>

#include <callrecordingutils/CallRecordingRuleParams.h>

#include "calls/SideTexts.h"
#include "matching/Decision.h"
#include "matching/RuleIndex.h"

namespace CallRecordingUtils {

/// A call whose sides are parties or typed addresses.
struct PartyCall {
    SideTexts caller;
    SideTexts called;
};

/// Returns whether rule is enabled and satisfied by both sides of call.
bool Takes(CallRecordingRuleParams const& rule, PartyCall const& call);

/// The rules in the order in which they are asked. Any number of threads may ask at once.
class RuleSet {
  public:
    /// No rules.
    RuleSet() = default;
    explicit RuleSet(std::vector<CallRecordingRuleParams> rules);

    RuleSet(RuleSet const&) = delete;
    RuleSet& operator=(RuleSet const&) = delete;

    std::vector<CallRecordingRuleParams> const& Rules() const { return rules_; }

    /// Returns the rule that decides call, the first one that takes it, or null. A rule that
    /// forbids recording decides like any other: ask ForbidsRecording.
    CallRecordingRuleParams const* Deciding(Call const& call) const {
        return DecidingRecord(order_, index_, call);
    }
    CallRecordingRuleParams const* Deciding(PartyCall const& call) const;

    /// The place of a rule that Deciding returned, counted from 0.
    std::size_t PlaceOf(CallRecordingRuleParams const& rule) const {
        return static_cast<std::size_t>(&rule - rules_.data());
    }

  private:
    std::vector<CallRecordingRuleParams> rules_;
    std::list<CallRecordingRuleParams*> order_; // Pointers to rules_.
    RuleIndex index_;                           // Of order_.
    std::uint16_t typePairs_ = 0;               // Which pairs of call types enabled rules have.
};

} // namespace CallRecordingUtils

#endif
