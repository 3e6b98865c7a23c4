// What a list of rules does, said exactly: for each rule a call that it decides or why there is
// none, where two lists differ, and whether a claim about all calls holds.
//
// Only rules that are enabled decide; the first that matches both sides does. A rule that forbids
// recording decides like any other, and its calls are not recorded. Answers are exact
// for all calls, of any length: what is said of a rule was found by automata, not by trying calls.
// Which calls there are says CallKind. The method is that of anomaly analysis for packet filters
// (Al-Shaer and Hamed, "Firewall Policy Advisor", 2003), with regular languages in the place of
// ranges of addresses.
//
// Where a question would need more memory or time than it is given, or depends on a pattern that
// cannot be analysed, the answer is "undecided" with the reason, and never a guess.

#ifndef ANALYSIS_RULEANALYSIS_H
#define ANALYSIS_RULEANALYSIS_H

#include <cstddef>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

#include "analysis/AnalysedRules.h"
#include "analysis/Claim.h"
#include "analysis/Comparison.h"

namespace CallRecordingUtils {

/// Rules are named by their places in the list, from 0.
struct RuleReport {
    enum Standing {
        kDecides,        ///< call is one that it decides.
        kHidden,         ///< Each call that it matches is matched by one of takenBy before it.
        kMatchesNothing, ///< No address satisfies its side.
        kOff,            ///< It is not enabled.
        kUndecided       ///< why says it.
    };
    Standing standing;
    std::optional<ExampleCall> call{};
    WhichSide side = WhichSide::Caller; ///< kMatchesNothing.
    std::optional<UndecidedReason> why{};

    /// Ascending. kDecides: the rules before it that decide calls which it matches; all of them
    /// when isComplete. kHidden: rules before it that hide it together; the fewest when isComplete.
    std::vector<std::size_t> takenBy{};
    bool isComplete = true;
};

/// Why a rule that never decides is a mistake, or is none.
struct HiddenRule {
    /// Whether each call that it matches is recorded as it would record it, or not recorded as
    /// well. Empty: undecided. When it is false, call is one for which it is not, and taker decides
    /// that.
    std::optional<bool> isTakenAlike;
    std::optional<ExampleCall> call;
    std::optional<std::size_t> taker;
    /// It would record calls that a rule before it forbids, of which call is one.
    bool isForbidden;
    /// One rule hides it that matches more than it, and does something else: the other way round
    /// both would decide.
    bool isBehindWider;
};

/// Whether a rule that decides could go without any call changing.
struct Removal {
    std::optional<bool> changesNothing;   ///< Empty: undecided.
    std::vector<std::size_t> heirs;       ///< True: rules that would take its calls instead.
    std::optional<ExampleCall> call;      ///< False: one that changes,
    std::optional<std::size_t> decidedBy; ///< and the rule that would decide it, if any.
};

/// A rule that can go, together with others.
struct NeedlessRule {
    std::size_t place;
    std::vector<std::size_t> insteadOf; ///< The rules that take its calls, or would.
};

/// What one rule is for. All rules are named by their places in the list as it is.
struct Explanation {
    RuleReport report;
    CallPatterns
        decides; ///< The calls that it decides; none, and not exact, where that is unknown.
    struct Loss {
        std::size_t taker;
        ExampleCall call; ///< One that taker decides and the rule matches.
    };
    std::vector<Loss> losses; ///< Of the rules of report.takenBy; of a hidden rule all that take.
    bool areLossesComplete;
    /// What changes if the rule went: here it decides; and if it came first: there it does.
    Comparison ifGone;
    Comparison ifFirst;
};

/// Answers questions about one list. The answers of several questions share what was found out.
class RuleAnalysis {
  public:
    /// rules must outlive the analysis.
    explicit RuleAnalysis(RuleParamsList const& rules, std::size_t memory = kAnalysisMemory,
                          CallKind calls = CallKind::Typed);

    /// The caller holds results of this many bytes, which count.
    void Reserve(std::size_t bytes) { rules_.Space().Reserve(bytes); }

    /// What the rule at place does. Of a rule that decides, takenBy names at most the first
    /// mostTakers; it costs a search for some of the rules before it.
    RuleReport Report(std::size_t place,
                      std::size_t mostTakers = std::numeric_limits<std::size_t>::max());

    /// REQUIRES: the report of the rule says kHidden, and this is its takenBy.
    HiddenRule Judge(std::size_t place, std::vector<std::size_t> const& takenBy);

    /// REQUIRES: the report of the rule says kDecides.
    Removal WithoutRule(std::size_t place);

    /// The rules that never decide and whose calls are recorded as they say, and those that decide
    /// but could go, in their order. Rules that quarrel with what takes their calls stay: somebody
    /// meant something by them.
    std::vector<NeedlessRule> FindNeedless();

    Proof Prove(Claim const& claim);

    /// All calls for which claim is false.
    Gaps FindGaps(Claim const& claim, std::size_t mostPatterns = 200,
                  std::size_t mostExamples = 20);

    /// Everything about the rule at place; mostPairs as Compare takes it.
    Explanation Explain(std::size_t place, std::size_t mostPairs = kAllPairs,
                        std::size_t mostPatterns = 200, std::size_t mostTakers = 100);

    /// A call that taker decides and the rule at place, behind it, also matches.
    std::optional<ExampleCall> CallTaken(std::size_t taker, std::size_t place);

  private:
    std::vector<std::size_t> ReasonFor(std::size_t place, bool& isSmallest);
    bool IsCovered(std::size_t rule, std::size_t by);
    void AddLosses(std::size_t place, std::size_t mostTakers, Explanation& explanation);
    CallAnswer FindChange(std::size_t place);
    Fate FateWithout(std::size_t place, RuleSpace::RuleIds const& must, FoundCall const& call);
    void LeaveOutHidden(std::vector<NeedlessRule>& needless);
    void LeaveOutDeciding(std::vector<NeedlessRule>& needless);

    AnalysedRules rules_;
    std::size_t const memory_;
};

} // namespace CallRecordingUtils

#endif
