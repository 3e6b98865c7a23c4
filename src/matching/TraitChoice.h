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

/// Looks at the traits of all rules of a list.
class TraitChoice {
  public:
    static constexpr std::size_t kNone = kTraits;

    /// traits must outlive the object.
    explicit TraitChoice(std::vector<RuleTraits> const& traits) : traits_(traits) {}

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
    Choices Best(Ranks const& rules, TraitSet const& open) const;

    /// Returns the trait in open that tells the most pairs of rules apart which none of asked does;
    /// of several that for which the fewest rules take any slot; kNone when all do everywhere.
    std::size_t BestFilter(Ranks const& rules, std::vector<std::size_t> const& asked,
                           TraitSet const& open) const;

  private:
    using Counts = std::array<std::uint16_t, kTraits>; // For each trait.

    Counts CountApart(Ranks const& rules, std::vector<std::size_t> const& asked) const;
    static Choice Most(Counts const& counts, TraitSet const& open);

    std::vector<RuleTraits> const& traits_;
};

} // namespace CallRecordingUtils

#endif
