// The fewest rules that together match all calls of a question.

#ifndef ANALYSIS_SMALLESTCOVER_H
#define ANALYSIS_SMALLESTCOVER_H

#include <functional>
#include <optional>

#include "analysis/RuleSpace.h"

namespace CallRecordingUtils {

struct Cover {
    RuleSpace::RuleIds rules; // Ascending.
    bool isSmallest;          // No fewer do; otherwise none of these can be left out, or they are
                              // too many to try.
};

/// The candidates that match a call, ascending; nothing when they are too many.
using MatchingCandidates = std::function<std::optional<RuleSpace::RuleIds>(FoundCall const&)>;

/// Returns rules that match every call that all of must match and none of avoid does: of the
/// candidates the fewest, and of these the first; where that would take too long, of known, which
/// are known to match all these calls. All of them have automata.
/// REQUIRES: known are candidates, and one of them is the first one that matches some such call.
Cover FindSmallestCover(RuleSpace& space, RuleSpace::RuleIds const& must,
                        RuleSpace::RuleIds const& avoid, MatchingCandidates const& matching,
                        RuleSpace::RuleIds const& known);

} // namespace CallRecordingUtils

#endif
