// Chooses by which traits rules are told apart. A choice changes the time that a decision takes,
// and never the decision.

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

/// Looks at the traits of some rules of a list.
class TraitChoice {
  public:
    /// traits are those of all rules of the list. The arguments must outlive the object.
    TraitChoice(std::vector<RuleTraits> const& traits, Ranks const& rules);

    /// A trait and how many of some pairs of rules it tells apart, of kPairs at the most.
    struct Choice {
        std::size_t trait;
        std::size_t apart;
    };
    static constexpr std::size_t kPairs = 32;

    /// What tells the most of some pairs of rules apart: of the traits in open, and of the middle
    /// traits of each side.
    struct Choices {
        Choice open;
        std::array<Choice, 2> middle;
    };
    Choices Best(TraitSet const& open) const;

    /// Returns at most most traits in open, one after the other: always that which tells the most
    /// pairs of rules apart which none before does; of several one that tells any pair apart, and
    /// of these that for which the fewest rules take any slot. Traits for which all do are none of
    /// them.
    std::vector<std::size_t> Filters(TraitSet open, std::size_t most) const;

  private:
    using Pairs = std::uint32_t;              // A set of the pairs, one bit for each.
    using Apart = std::array<Pairs, kTraits>; // For each trait those that it tells apart.

    std::array<std::uint16_t, kTraits> Certain() const;

    std::vector<RuleTraits> const& traits_;
    Ranks const& rules_;
    Apart apart_{};
};

} // namespace CallRecordingUtils

#endif
