// Finds, over some pairs of rules, what each trait tells apart. The loops over all traits are what
// building an index takes its time for; they are plain so that the compiler makes vectors of them.

#include "matching/TraitChoice.h"

#include <algorithm>

#include "common/Bits.h"

namespace CallRecordingUtils {

TraitSet MiddleTraits(std::size_t side) {
    TraitSet middle;
    for (std::size_t i = 0; i < kTraitsOfView[static_cast<std::size_t>(View::Middle)]; ++i)
        middle.set(FirstTrait(side, View::Middle) + i);
    return middle;
}

TraitChoice::TraitChoice(std::vector<RuleTraits> const& traits, Ranks const& rules)
    : traits_(traits), rules_(rules) {
    std::size_t const size = rules.size();
    std::size_t const pairs = std::min(kPairs, size * (size - 1) / 2);
    for (std::size_t pair = 0; pair < pairs; ++pair) {
        // Pairs spread over all rules, near ones and far ones.
        std::size_t const i = pair * size / pairs;
        std::size_t const j = (i + 1 + (size / 2 + 7 * pair) % (size - 1)) % size;
        RuleTraits const& a = traits_[rules[i]];
        RuleTraits const& b = traits_[rules[j]];
        for (std::size_t t = 0; t < kTraits; ++t)
            apart_[t] |= static_cast<Pairs>((a[t] & b[t]) == 0 ? 1 : 0) << pair;
    }
}

TraitChoice::Choices TraitChoice::Best(TraitSet const& open) const {
    auto const best = [this](TraitSet const& among) {
        Choice choice{kTraits, 0};
        for (std::size_t t = 0; t < kTraits; ++t)
            if (std::size_t const count = CountBits(apart_[t]); count > choice.apart && among[t])
                choice = {t, count};
        return choice;
    };
    return {best(open), {best(MiddleTraits(0)), best(MiddleTraits(1))}};
}

/// For each trait how many of some rules do not take any slot.
std::array<std::uint16_t, kTraits> TraitChoice::Certain() const {
    std::array<std::uint16_t, kTraits> certain{};
    std::size_t const step = rules_.size() / kPairs + 1;
    for (std::size_t i = 0; i < rules_.size(); i += step) {
        RuleTraits const& traits = traits_[rules_[i]];
        for (std::size_t t = 0; t < kTraits; ++t)
            certain[t] = static_cast<std::uint16_t>(certain[t] + (traits[t] != kAnySlot ? 1 : 0));
    }
    return certain;
}

std::vector<std::size_t> TraitChoice::Filters(TraitSet open, std::size_t most) const {
    std::vector<std::size_t> filters;
    Apart apart = apart_;
    auto const certain = Certain();
    while (filters.size() < most) {
        std::size_t best = kTraits;
        std::size_t bestWorth = 0;
        for (std::size_t t = 0; t < kTraits; ++t) {
            std::size_t const worth =
                4 * kPairs * CountBits(apart[t]) + (apart_[t] != 0 ? 2 * kPairs : 0) + certain[t];
            if (worth > bestWorth && open[t]) {
                best = t;
                bestWorth = worth;
            }
        }
        if (best == kTraits)
            break;
        filters.push_back(best);
        open.reset(best);
        Pairs const told = apart[best];
        for (Pairs& pairs : apart)
            pairs &= ~told;
    }
    return filters;
}

} // namespace CallRecordingUtils
