// Rules of one or several lists in one space of calls, and the one question that all others come
// down to: is there a call that these rules match and those do not?

#ifndef ANALYSIS_RULESPACE_H
#define ANALYSIS_RULESPACE_H

#include <array>
#include <cstddef>
#include <optional>
#include <vector>

#include "analysis/CallSearch.h"
#include "model/RuleSides.h"

namespace CallRecordingUtils {

/// What an analysis may hold, in bytes. The time that it takes is bounded apart from it: some
/// seconds, and more where there are many rules.
inline constexpr std::size_t kAnalysisMemory = std::size_t{256} << 20;

/// Which side of a rule is meant.
enum class WhichSide { Caller, Called };

class RuleSpace {
  public:
    using RuleId = std::size_t;
    using RuleIds = std::vector<RuleId>;

    /// memory, in bytes, bounds what the automata and a search hold together.
    RuleSpace(CallKind calls, std::size_t memory);

    RuleId Add(RuleSides const& sides);

    CallKind Calls() const { return pool_.Calls(); }
    AutomatonPool& Pool() { return pool_; }
    AutomatonPool const& Pool() const { return pool_; }

    /// Why a side of rule has no automaton; it may then match any call of its type or none.
    std::optional<Unreadable> ProblemOf(RuleId rule, WhichSide side);
    /// Whether both sides have automata of their own.
    bool IsReadable(RuleId rule);
    bool AcceptsNothing(RuleId rule, WhichSide side);
    SidePair const& SidesIn(RuleId rule) const { return rules_[rule]; }
    bool HaveSameSides(RuleId a, RuleId b) const;

    /// Whether both rules may match a call; quick, and often true when there is none.
    bool MayMeet(RuleId a, RuleId b) const;
    /// Whether rule matches call, as far as its sides have automata.
    bool Matches(RuleId rule, FoundCall const& call);

    /// Questions of each kind have steps of their own, so that those of which there may be a great
    /// many leave the others theirs.
    enum Importance { kMain, kFurther };
    /// What the next question may cost. A question takes a part of the steps that are left, and the
    /// main ones may take some more for nothing, so that no question, however hard, leaves nothing
    /// for the easy ones after it.
    Allowance BeginQuestion(Importance importance = kMain) const;
    void EndQuestion(Allowance const& begun, Allowance const& left, Importance importance = kMain);

    /// Whether a call is matched by all of must and by none of avoid. A side that has no automaton
    /// counts as matching all that it may.
    CallFinding Search(RuleIds const& must, RuleIds const& avoid, Allowance& allowance,
                       Prefer prefer = Prefer::Digits);

    /// Others hold this many bytes of the memory, from now on.
    void Reserve(std::size_t bytes) { reserved_ += bytes; }
    std::size_t BytesLeft() const;

  private:
    bool Covers(RuleId rule, RuleIds const& must) const;

    std::size_t const memory_;
    std::size_t reserved_ = 0;
    std::array<std::uint64_t, 2> steps_; // That all questions of a kind may still take.
    std::size_t freeQuestions_;          // Those that may still take some steps for nothing.
    AutomatonPool pool_;
    CheapestAddresses cheapest_{pool_};
    std::vector<SidePair> rules_;
};

} // namespace CallRecordingUtils

#endif
