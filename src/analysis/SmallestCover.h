// The fewest rules that together match all calls of a question.

#ifndef ANALYSIS_SMALLESTCOVER_H
#define ANALYSIS_SMALLESTCOVER_H

#include "analysis/RuleSpace.h"

namespace CallRecordingUtils {

struct Cover {
    RuleSpace::RuleIds rules; // Ascending.
    bool isSmallest;          // No fewer do; otherwise none of these can be left out, or they are
                              // too many to try.
};

/// Returns rules that match every call that all of must match and none of avoid does: of
/// candidates, which are ascending, the fewest, and of these the first; where that would take too
/// long, of known, which are known to match all these calls. All of them have automata.
Cover FindSmallestCover(RuleSpace& space, RuleSpace::RuleIds const& must,
                        RuleSpace::RuleIds const& avoid, RuleSpace::RuleIds const& candidates,
                        RuleSpace::RuleIds const& known);

} // namespace CallRecordingUtils

#endif
