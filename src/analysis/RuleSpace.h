// Rules of one or several lists in one space of calls, and the one question that all others come
// down to: is there a call that these rules match and those do not?

#ifndef ANALYSIS_RULESPACE_H
#define ANALYSIS_RULESPACE_H

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "analysis/CallSearch.h"
#include "model/RuleSides.h"
#include "model/SipAddress.h"

namespace CallRecordingUtils {

/// A call to show: what a telephony process would hand over for it.
struct ExampleCall {
    CallParty caller;
    CallParty called;
};

/// Which side of a rule is meant.
enum class WhichSide { Caller, Called };

class RuleSpace {
  public:
    using RuleId = std::size_t;

    /// The rules ids[0] to ids[count - 1].
    struct Rules {
        std::vector<RuleId> const& ids;
        std::size_t count;
    };
    struct Answer {
        Outcome outcome;
        std::optional<ExampleCall> call; // When one is found. When undecided: one to look at.
    };

    /// memory, in bytes, bounds what the automata and a search hold together, and in proportion to
    /// it the time that all questions take.
    explicit RuleSpace(std::size_t memory);

    RuleId Add(RuleSides const& sides);

    /// Why a side of rule has no automaton; it may then match any call of its type or none.
    std::optional<Unreadable> ProblemOf(RuleId rule, WhichSide side) const;
    bool AcceptsNothing(RuleId rule, WhichSide side) const;
    SidePair const& SidesIn(RuleId rule) const { return rules_[rule].sides; }
    bool HaveSameSides(RuleId a, RuleId b) const;

    /// Whether both rules may match a call; quick, and often true when there is none.
    bool MayMeet(RuleId a, RuleId b) const;

    /// Whether a call is matched by all of must and by none of avoid. The answer is exact also
    /// where rules have no automaton: then it is one that holds whatever they match, or undecided.
    Answer Find(std::vector<RuleId> const& must, std::vector<Rules> const& avoid);

  private:
    struct Rule {
        SidePair sides;
        bool isReadable; // Both sides have automata of their own.
    };

    SideId AddSide(RuleSide const& side);
    bool Covers(RuleId rule, std::vector<RuleId> const& must) const;
    Answer Search(std::vector<RuleId> const& must, std::vector<Rules> const& avoid,
                  bool avoidUnreadable);

    std::size_t const memory_;
    std::uint64_t steps_; // That all questions together may still take.
    AutomatonPool pool_;
    std::vector<std::optional<Unreadable>> problems_; // By side.
    std::map<std::pair<std::int32_t, std::string>, SideId> sideOf_;
    std::vector<Rule> rules_;
};

} // namespace CallRecordingUtils

#endif
