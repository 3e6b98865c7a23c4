// What a list of rules does, said exactly: for each rule a call that it decides or why there is
// none, where two lists differ, and whether a claim about all calls holds.
//
// A call has a calling and a called side; a side is a number, a number of the second kind, or a SIP
// address whose user and host hold no "@" and whose port holds neither "@" nor ":". Only rules that
// are enabled decide; the first that matches both sides does. Answers are exact for all calls, of
// any length: what is said of a rule was found by automata, not by trying calls. The method is that
// of anomaly analysis for packet filters (Al-Shaer and Hamed, "Firewall Policy Advisor", 2003),
// with regular languages in the place of ranges of addresses.
//
// Where a pattern is outside of what the checks of patterns pass, or a question would need more
// memory or time than it is given, the answer is "undecided" and never a guess.

#ifndef ANALYSIS_RULEANALYSIS_H
#define ANALYSIS_RULEANALYSIS_H

#include <cstddef>
#include <limits>
#include <optional>
#include <vector>

#include <callrecordingutils/CallRecordingRuleParams.h>

#include "analysis/ExampleMatches.h"
#include "analysis/RuleSpace.h"

namespace CallRecordingUtils {

/// What the automata and one search may hold together, in bytes. The time that an analysis takes is
/// bounded in proportion to it: some ten seconds with this value.
inline constexpr std::size_t kAnalysisMemory = std::size_t{256} << 20;

using RuleParamsList = std::vector<CallRecordingRuleParams>;

/// Rules are named by their places in the list, from 0.
struct RuleReport {
    enum Standing {
        kDecides,        ///< call is one that it decides.
        kHidden,         ///< Each call that it matches is decided by one of takenBy before it.
        kMatchesNothing, ///< No address satisfies its side.
        kOff,            ///< It is not enabled.
        kNotAnalysable,  ///< The pattern of its side is outside of the checked language.
        kUndecided       ///< For want of memory, or because of such patterns of rules before it.
    };
    Standing standing;
    std::optional<ExampleCall> call;
    /// kDecides and kHidden: the rules before it that decide calls which it matches, ascending. For
    /// a rule that is hidden it takes all of these to hide it, or some of them.
    std::vector<std::size_t> takenBy;
    WhichSide side = WhichSide::Caller; ///< kMatchesNothing and kNotAnalysable.
};

/// Every call, or no rule, where an optional place is empty.
struct Difference {
    ExampleCall call;
    std::optional<std::size_t> here;  ///< The rule that decides call in the one list,
    std::optional<std::size_t> there; ///< and in the other.
};

struct Comparison {
    /// Whether both lists decide every call alike: recorded by both, with the same recording type,
    /// destination and duration, or by neither. Empty: undecided.
    std::optional<bool> same;
    std::vector<Difference> differences; ///< One for each pair of rules that some call shows.
};

/// That every call whose sides satisfy those of calls is decided so.
struct Claim {
    enum Outcome { kRecorded, kNotRecorded, kByRule };
    RuleSides calls; ///< They borrow their patterns.
    Outcome outcome;
    std::size_t rule = 0; ///< kByRule: its place.
};

struct Proof {
    std::optional<bool> proved; ///< Empty: undecided.
    std::optional<ExampleCall> counterexample;
    std::optional<std::size_t> decidedBy; ///< The rule that decides the counterexample, if any.
};

/// Answers questions about one list. The answers of several questions share what was found out.
class RuleAnalysis {
  public:
    /// rules must outlive the analysis.
    explicit RuleAnalysis(RuleParamsList const& rules, std::size_t memory = kAnalysisMemory);

    /// What the rule at place does. Of a rule that decides, takenBy names at most the first
    /// mostTakers; it costs a search for some of the rules before it.
    RuleReport Report(std::size_t place,
                      std::size_t mostTakers = std::numeric_limits<std::size_t>::max());

    Proof Prove(Claim const& claim);

    /// Whether a side of the rule at place is outside of the checked language.
    bool IsAnalysable(std::size_t place) const;

  private:
    using Answer = RuleSpace::Answer;

    Answer Decided(std::size_t place, std::vector<RuleSpace::RuleId> const& those);
    Answer const& Example(std::size_t place); // A call that the rule decides.
    std::vector<std::size_t> TakersOf(std::size_t place, std::size_t most);
    bool Takes(std::size_t taker, std::size_t place);
    bool DoExamplesShow(std::size_t taker, std::size_t place);
    RuleSpace::Rules EnabledBefore(std::size_t place) const;
    bool Refutes(Claim const& claim, Answer const& answer, Proof& proof) const;

    RuleParamsList const& rules_;
    std::size_t const mostBytes_; // For matches_.
    RuleSpace space_;
    ExampleMatches matches_;
    std::vector<RuleSpace::RuleId> ids_;     // By place.
    std::vector<RuleSpace::RuleId> enabled_; // Of those that are.
    std::vector<std::size_t> placesOfEnabled_;
    std::vector<std::size_t> enabledBefore_; // By place: how many.
    std::vector<std::optional<Answer>> examples_;
};

/// Compares two lists. What cannot be said of a pattern is no difference where both lists have the
/// rule.
Comparison Compare(RuleParamsList const& here, RuleParamsList const& there,
                   std::size_t memory = kAnalysisMemory);

/// The rule of rules that decides call; nothing when none does. Asks the matcher.
std::optional<std::size_t> DecidingPlace(RuleParamsList const& rules, ExampleCall const& call);

} // namespace CallRecordingUtils

#endif
