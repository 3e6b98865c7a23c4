// Chooses the traits that tell rules apart. A choice changes the time that a decision takes, and
// never the decision.

#ifndef MATCHING_TRAITCHOICE_H
#define MATCHING_TRAITCHOICE_H

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "matching/RuleTraits.h"

namespace CallRecordingUtils {

using TraitSet = std::bitset<kTraits>;
TraitSet MiddleTraits(std::size_t side);

using Ranks = std::vector<std::uint32_t>; // Places of rules in a list, in list order.

/// Compares the traits of some rules of a list. A trait tells two rules apart when no slot is in
/// both of their sets there. Not all pairs of the rules are compared, but up to kPairs of them.
class TraitChoice {
  public:
    static constexpr std::size_t kPairs = 32;

    /// traits are those of all rules of the list. The arguments must outlive the object.
    TraitChoice(std::vector<RuleTraits> const& traits, Ranks const& rules);

    /// A trait, and how many of the pairs it tells apart.
    struct Choice {
        std::size_t trait;
        std::size_t apart;
    };
    /// Returns the trait in among that tells most pairs apart; kTraits and 0 when none tells any
    /// apart.
    Choice Best(TraitSet const& among) const;

    /// Returns up to limit traits in open, the best first. The best is the one that tells most
    /// pairs apart that those before it do not. Of equal ones it is one that tells some pair apart,
    /// and then the one where most rules are narrow, that is, do not accept every slot.
    std::vector<std::size_t> Filters(TraitSet open, std::size_t limit) const;

  private:
    using Pairs = std::uint32_t;              // A set of the pairs, one bit for each.
    using Apart = std::array<Pairs, kTraits>; // For each trait the pairs that it tells apart.
    using Counts = std::array<std::uint32_t, kTraits>;

    static Counts CountsOf(Apart const& apart);
    Counts NarrowRules() const;

    std::vector<RuleTraits> const& traits_;
    Ranks const& rules_;
    Apart apart_{};
    Counts counts_{}; // How many bits each has.
};

} // namespace CallRecordingUtils

#endif
