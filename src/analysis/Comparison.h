// Where two lists of rules decide differently.

#ifndef ANALYSIS_COMPARISON_H
#define ANALYSIS_COMPARISON_H

#include <cstddef>
#include <limits>
#include <optional>
#include <vector>

#include "analysis/AnalysedRules.h"

namespace CallRecordingUtils {

/// A place that is empty: no rule.
struct Difference {
    ExampleCall call;
    std::optional<std::size_t> here;  ///< The rule that decides call in the one list,
    std::optional<std::size_t> there; ///< and in the other.
};

/// Two rules of which it is not known whether some call is decided by the one here and by the other
/// there. The rule of why is one of the list here, or there.
struct UndecidedPair {
    std::optional<std::size_t> here;
    std::optional<std::size_t> there;
    UndecidedReason why;
    bool isWhyThere;
};

struct Comparison {
    /// Whether both lists decide every call alike: recorded by both, with the same recording type,
    /// destination and duration, or by neither. Empty: undecided; then there are no differences.
    std::optional<bool> same;
    std::vector<Difference> differences;  ///< One for each pair of rules that some call shows.
    bool areAllLookedFor = true;          ///< No pair was left out because there are too many.
    std::vector<UndecidedPair> undecided; ///< Also beside differences.
};

inline constexpr std::size_t kAllPairs = std::numeric_limits<std::size_t>::max();

/// Compares two lists. What cannot be said of a pattern is no difference where both lists have the
/// rule. memory is in bytes. A rule that has moved, or is in one list only, may differ from
/// thousands: once that many pairs were found of it, no more are looked for.
Comparison Compare(RuleParamsList const& here, RuleParamsList const& there,
                   std::size_t memory = kAnalysisMemory, CallKind calls = CallKind::Typed,
                   std::size_t mostPairsOfRule = kAllPairs);

} // namespace CallRecordingUtils

#endif
