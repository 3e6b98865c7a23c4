// Searches for a call that some rules match and others do not.

#ifndef ANALYSIS_CALLSEARCH_H
#define ANALYSIS_CALLSEARCH_H

#include <optional>
#include <vector>

#include "analysis/AddressSearch.h"

namespace CallRecordingUtils {

/// The two sides of a rule in the pool.
struct SidePair {
    SideId caller;
    SideId called;
};

struct FoundCall {
    Address caller;
    Address called;
};

struct CallFinding {
    Outcome outcome;
    FoundCall call; // When one is found.
};

/// The cheapest address that one side accepts, for each side: most questions begin with it.
class CheapestAddresses {
  public:
    explicit CheapestAddresses(AutomatonPool& pool) : pool_(pool) {}

    /// Finds the cheapest address that all of sides accept; they are a set.
    Outcome Find(std::vector<SideId> const& sides, Allowance& allowance, Address& found);

    std::size_t Bytes() const { return known_.capacity() * sizeof(known_[0]) + bytesOfTexts_; }

  private:
    AutomatonPool& pool_;
    std::vector<std::optional<Address>> known_; // By side.
    std::size_t bytesOfTexts_ = 0;
};

/// Returns a cheap call that all of must match and none of avoid does. What one side must satisfy
/// depends on the other: for each set of rules that an address of the one side leaves to be
/// avoided, the other side is searched; of these sets only the least matter, and a set that is no
/// smaller than one that failed is given up at once.
CallFinding SearchCall(AutomatonPool& pool, std::vector<SidePair> const& must,
                       std::vector<SidePair> const& avoid, CheapestAddresses& cheapest,
                       Allowance& allowance, Prefer prefer);

} // namespace CallRecordingUtils

#endif
