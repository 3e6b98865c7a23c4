// Finds, over some pairs of rules, what each trait tells apart. Most of the time that it takes to
// build an index goes into the loops over all traits here. They are plain so that the compiler
// vectorizes them.

#include "matching/TraitChoice.h"

#include <algorithm>
#include <tuple>

namespace CallRecordingUtils {

TraitSet MiddleTraits(std::size_t side) {
    TraitSet middle;
    for (std::size_t i = 0; i < TraitsOfView(View::Middle); ++i)
        middle.set(FirstTrait(side, View::Middle) + i);
    return middle;
}

TraitChoice::TraitChoice(std::vector<RuleTraits> const& traits, Ranks const& rules)
    : traits_(traits), rules_(rules) {
    std::size_t const size = rules.size();
    std::size_t const pairs = std::min({kPairs, size * (size - 1) / 2, 2 * size});
    for (std::size_t pair = 0; pair < pairs; ++pair) {
        // The pairs are spread over all rules, close ones and distant ones.
        std::size_t const i = pair * size / pairs;
        std::size_t const j = (i + 1 + (size / 2 + 7 * pair) % (size - 1)) % size;
        RuleTraits const& a = traits_[rules[i]];
        RuleTraits const& b = traits_[rules[j]];
        for (std::size_t t = 0; t < kTraits; ++t)
            apart_[t] |= static_cast<Pairs>((a[t] & b[t]) == 0 ? 1 : 0) << pair;
    }
    counts_ = CountsOf(apart_);
}

/// Adds the bits up in pairs, fours and so on. (CountBits multiplies, which is not vectorized.)
TraitChoice::Counts TraitChoice::CountsOf(Apart const& apart) {
    Counts counts;
    for (std::size_t t = 0; t < kTraits; ++t) {
        Pairs bits = apart[t];
        bits -= bits >> 1 & 0x55555555;
        bits = (bits & 0x33333333) + (bits >> 2 & 0x33333333);
        bits = (bits + (bits >> 4)) & 0x0f0f0f0f;
        bits += bits >> 8;
        counts[t] = (bits + (bits >> 16)) & 0x3f;
    }
    return counts;
}

TraitChoice::Choice TraitChoice::Best(TraitSet const& among) const {
    Choice choice{kTraits, 0};
    for (std::size_t t = 0; t < kTraits; ++t)
        if (counts_[t] > choice.apart && among[t])
            choice = {t, counts_[t]};
    return choice;
}

/// For each trait, how many of a sample of the rules do not accept every slot.
TraitChoice::Counts TraitChoice::NarrowRules() const {
    Counts narrow{};
    std::size_t const step = rules_.size() / kPairs + 1;
    for (std::size_t i = 0; i < rules_.size(); i += step) {
        RuleTraits const& traits = traits_[rules_[i]];
        for (std::size_t t = 0; t < kTraits; ++t)
            narrow[t] += traits[t] != kAnySlot ? 1 : 0;
    }
    return narrow;
}

std::vector<std::size_t> TraitChoice::Filters(TraitSet open, std::size_t limit) const {
    using Worth = std::tuple<std::uint32_t, bool, std::uint32_t>;
    std::vector<std::size_t> filters;
    Apart apart = apart_; // Without the pairs that the filters so far tell apart.
    Counts const narrow = NarrowRules();
    while (filters.size() < limit) {
        Counts const counts = CountsOf(apart);
        std::size_t best = kTraits;
        Worth bestWorth{};
        for (std::size_t t = 0; t < kTraits; ++t)
            if (Worth const worth{counts[t], apart_[t] != 0, narrow[t]};
                worth > bestWorth && open[t]) {
                best = t;
                bestWorth = worth;
            }
        if (best == kTraits)
            break;
        filters.push_back(best);
        open.reset(best);
        Pairs const toldApart = apart[best];
        for (Pairs& pairs : apart)
            pairs &= ~toldApart;
    }
    return filters;
}

} // namespace CallRecordingUtils
