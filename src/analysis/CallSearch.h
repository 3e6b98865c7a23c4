// Searches for a call that some rules match and others do not.

#ifndef ANALYSIS_CALLSEARCH_H
#define ANALYSIS_CALLSEARCH_H

#include <vector>

#include "analysis/AddressSearch.h"

namespace CallRecordingUtils {

/// The two sides of a rule in the pool.
struct SidePair {
    SideId caller;
    SideId called;
};

struct FoundCall {
    FoundAddress caller;
    FoundAddress called;
};

struct CallFinding {
    Outcome outcome;
    FoundCall call; // When one is found.
};

/// Returns a cheap call that all of must match and none of avoid does. What one side must satisfy
/// depends on the other: for each set of rules that an address of the one side leaves to be
/// avoided, the other side is searched; of these sets only the least matter, and a set that is no
/// smaller than one that failed is given up at once.
CallFinding SearchCall(AutomatonPool const& pool, std::vector<SidePair> const& must,
                       std::vector<SidePair> const& avoid, Allowance& allowance);

} // namespace CallRecordingUtils

#endif
