// Counts, over some pairs of rules, what each trait tells apart. The loops over all traits are what
// building an index takes its time for; they are plain so that the compiler makes vectors of them.

#include "matching/TraitChoice.h"

#include <algorithm>

namespace CallRecordingUtils {

TraitSet MiddleTraits(std::size_t side) {
    TraitSet middle;
    for (std::size_t i = 0; i < kTraitsOfView[static_cast<std::size_t>(View::Middle)]; ++i)
        middle.set(FirstTrait(side, View::Middle) + i);
    return middle;
}

TraitChoice::Counts TraitChoice::CountApart(Ranks const& rules,
                                            std::vector<std::size_t> const& asked) const {
    Counts apart{};
    std::size_t const size = rules.size();
    std::size_t const pairs = std::min(kPairs, size * (size - 1) / 2);
    for (std::size_t pair = 0; pair < pairs; ++pair) {
        // Pairs spread over all rules, near ones and far ones.
        std::size_t const i = pair * size / pairs;
        std::size_t const j = (i + 1 + (size / 2 + 7 * pair) % (size - 1)) % size;
        RuleTraits const& a = traits_[rules[i]];
        RuleTraits const& b = traits_[rules[j]];
        if (std::any_of(asked.begin(), asked.end(),
                        [&](std::size_t trait) { return (a[trait] & b[trait]) == 0; }))
            continue;
        for (std::size_t t = 0; t < kTraits; ++t)
            apart[t] = static_cast<std::uint16_t>(apart[t] + ((a[t] & b[t]) == 0 ? 1 : 0));
    }
    return apart;
}

TraitChoice::Choice TraitChoice::Most(Counts const& counts, TraitSet const& open) {
    Choice best{kNone, 0};
    for (std::size_t t = 0; t < kTraits; ++t)
        if (counts[t] > best.apart && open[t])
            best = {t, counts[t]};
    return best;
}

TraitChoice::Choices TraitChoice::Best(Ranks const& rules, TraitSet const& open) const {
    Counts const apart = CountApart(rules, {});
    return {Most(apart, open), {Most(apart, MiddleTraits(0)), Most(apart, MiddleTraits(1))}};
}

std::size_t TraitChoice::BestFilter(Ranks const& rules, std::vector<std::size_t> const& asked,
                                    TraitSet const& open) const {
    Counts worth = CountApart(rules, asked);
    for (std::size_t t = 0; t < kTraits; ++t)
        worth[t] = static_cast<std::uint16_t>(2 * kPairs * worth[t]);
    std::size_t const step = rules.size() / kPairs + 1;
    for (std::size_t i = 0; i < rules.size(); i += step) {
        RuleTraits const& traits = traits_[rules[i]];
        for (std::size_t t = 0; t < kTraits; ++t)
            worth[t] = static_cast<std::uint16_t>(worth[t] + (traits[t] != kAnySlot ? 1 : 0));
    }
    return Most(worth, open).trait;
}

} // namespace CallRecordingUtils
