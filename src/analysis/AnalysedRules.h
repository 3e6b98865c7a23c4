// One list of rules, with what is found out about its rules one by one. Every question about the
// list is put together of these.

#ifndef ANALYSIS_ANALYSEDRULES_H
#define ANALYSIS_ANALYSEDRULES_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include <callrecordingutils/CallRecordingRuleParams.h>

#include "analysis/CallDecider.h"
#include "analysis/CallFinder.h"
#include "analysis/MeetIndex.h"
#include "model/RecordingOutcome.h"

namespace CallRecordingUtils {

using RuleParamsList = std::vector<CallRecordingRuleParams>;

/// The rules are named by their places in the list, which are their ids in the space, too.
class AnalysedRules {
  public:
    using Places = std::vector<std::size_t>;

    /// rules must outlive the object.
    AnalysedRules(RuleParamsList const& rules, std::size_t memory, CallKind calls);
    AnalysedRules(AnalysedRules const&) = delete;
    AnalysedRules& operator=(AnalysedRules const&) = delete;

    RuleParamsList const& Rules() const { return rules_; }
    RuleSpace& Space() { return space_; }
    CallDecider& Deciding() { return decider_; }
    ExampleCall Shown(FoundCall const& call) const { return ExampleOf(call, space_.Calls()); }

    bool IsEnabled(std::size_t place) const {
        return rules_[place].recording_rule_state == RULE_ENABLED;
    }
    CallRecordingRuleParams const* Rule(std::optional<std::size_t> place) const {
        return place ? &rules_[*place] : nullptr;
    }
    bool Matches(std::size_t place, ExampleCall const& call) const;
    /// Whether both rules make the same of a call; quick.
    bool AreAlike(std::size_t a, std::size_t b) const { return outcomes_[a] == outcomes_[b]; }
    /// The enabled rules that forbid recording, ascending.
    Places const& Forbidding() const { return forbidding_; }

    /// A call that the rule at place decides. What was found is kept.
    CallAnswer const& Example(std::size_t place);

    bool IsKnownToBeHidden(std::size_t place) const {
        return examples_[place] && examples_[place]->outcome == Outcome::None;
    }

    /// A call that the rule at place decides and that the rule with id also matches.
    CallAnswer FindShared(std::size_t place, std::size_t also);
    /// A call that the rule at place decides, as the decider has it now.
    CallAnswer FindDecided(std::size_t place);

    /// The enabled rules that may match a call that the rule with id matches, from the place begin
    /// up to end, ascending.
    Places MayMeet(RuleSpace::RuleId id, std::size_t begin, std::size_t end) const;
    /// The same one by one, until visit returns false.
    template <typename Visit>
    void ForEachMeeting(RuleSpace::RuleId id, std::size_t begin, std::size_t end,
                        Visit const& visit) const {
        constexpr std::size_t kFirst = 256; // Mostly the first few are enough.
        for (std::size_t size = kFirst; begin < end; begin += size, size *= 4)
            for (std::size_t const place : Near(id, begin, std::min(end, begin + size)))
                if (space_.MayMeet(place, id) && !visit(place))
                    return;
    }

    /// The enabled rules before end that match call and have automata; nothing when they are more
    /// than anybody wants to look at. REQUIRES: no rule is left out of the decisions.
    std::optional<Places> Matching(FoundCall const& call, std::size_t end);

    /// The enabled rules before place that decide calls which it matches.
    struct Takers {
        Places places;   // Ascending.
        bool isComplete; // No further ones were left out, and all was decided.
    };
    Takers TakersOf(std::size_t place, std::size_t most);
    /// A call that taker decides and the rule at place matches.
    CallAnswer FindTaken(std::size_t taker, std::size_t place);

  private:
    void NumberOutcomes();
    std::vector<std::uint32_t> Near(RuleSpace::RuleId id, std::size_t begin, std::size_t end) const;
    bool DoExamplesShow(std::size_t taker, std::size_t place, FoundCall& call);
    Fate FateBefore(std::size_t place, RuleSpace::RuleIds const& must, FoundCall const& call);

    RuleParamsList const& rules_;
    RuleSpace space_;
    CallDecider decider_;
    std::vector<std::uint32_t> outcomes_; // Numbers of what rules make of calls, by place.
    Places forbidding_;
    std::array<MeetIndex, 2> meeting_; // By the called and the calling side.
    std::vector<std::optional<CallAnswer>> examples_;
};

} // namespace CallRecordingUtils

#endif
