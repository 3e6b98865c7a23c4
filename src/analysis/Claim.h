// A claim about all calls of some kind, and the proof of it.

#ifndef ANALYSIS_CLAIM_H
#define ANALYSIS_CLAIM_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "analysis/CallPatterns.h"

namespace CallRecordingUtils {

/// That every call whose sides satisfy those of calls, and neither of whose sides satisfies an
/// exception, is decided as all that is set says. The patterns are borrowed.
struct Claim {
    RuleSides calls;
    std::vector<RuleSide> exceptCallers;
    std::vector<RuleSide> exceptCalled;

    std::optional<bool> isRecorded;
    std::optional<std::size_t> rule;               ///< Decided by the rule at this place.
    std::optional<std::string> recordTo;           ///< Recorded there: as stored, byte for byte;
    std::optional<std::string> duration;           ///< so long,
    std::optional<std::int32_t> callRecordingType; ///< and so.

    /// Whether a call that decider decides, null for no rule, is decided as claimed.
    bool Wants(AnalysedRules const& rules, std::optional<std::size_t> decider) const;
};

/// Rules are named by their places in the list, from 0. Enough for somebody who has the claim and
/// the list to see that it is true: the rules of covering match every call of the claim, all of
/// them decide as claimed, and of the calls that one of others matches, every one is matched by one
/// of its covering before it, which decide as claimed. No further rule that decides otherwise and
/// comes before the last of covering matches a call of the claim. (Where nothing is claimed but
/// that calls are not recorded, covering is empty, and what is said of others holds of all rules.)
struct Proof {
    std::optional<bool> proved; ///< Empty: undecided, and why says so.
    bool isOfNoCall = false;    ///< Proved, since no call is meant.
    std::optional<UndecidedReason> why{};
    std::optional<ExampleCall> counterexample{};
    std::optional<std::size_t> decidedBy{}; ///< The rule that decides the counterexample, if any.

    std::vector<std::size_t> covering{};
    struct Other {
        std::size_t rule;
        std::vector<std::size_t> covering;
    };
    std::vector<Other> others{};
    bool isSmallest = true; ///< No fewer rules would do in each of these lists.
};

Proof Prove(AnalysedRules& rules, Claim const& claim);

/// All calls for which a claim is false.
struct Gaps {
    CallPatterns calls;
    /// Where the patterns are not exact: a call that no rule decides, if one is false for that, and
    /// one for each rule that decides some.
    std::vector<ExampleCall> examples;
    bool areExamplesComplete; ///< No rule was left out, and all was decided.
};

/// At most mostPatterns patterns, or else mostExamples examples.
Gaps FindGaps(AnalysedRules& rules, Claim const& claim, std::size_t mostPatterns,
              std::size_t mostExamples);

} // namespace CallRecordingUtils

#endif
