// The search in the index. RuleIndexBuilder.cpp builds it.

#include "matching/RuleIndex.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

#include "common/Bits.h"

namespace CallRecordingUtils {

/// One search. It keeps the best rule found so far, and passes over every rule behind that one and
/// every node that has only rules behind it.
class RuleIndex::Search {
  public:
    Search(RuleIndex const& index, Call const& call)
        : index_(index), call_(call), limit_(index.rules_.size() / 8 + 32) {}

    /// Looks at the rules below a node. The depth is limited: between the root and a leaf no trait
    /// is looked at twice.
    void Visit(Child node, CallTraits const& traits) {
        while (node.first < best_ && ++effort_ <= limit_)
            switch (node.kind) {
            case Kind::Split: node = VisitSplit(index_.splits_[node.place], traits); break;
            case Kind::Origins: node = VisitOrigins(index_.origins_[node.place], traits); break;
            case Kind::Leaf: VisitLeaf(index_.leaves_[node.place], traits); return;
            case Kind::None: return;
            }
    }

    /// A search gives up when the tree does not help: where many rules are alike, and each would be
    /// tested for many origins. The best rule up to then does take the call, so to walk over the
    /// rules before it completes the search.
    bool HasGivenUp() const { return effort_ > limit_; }
    void Walk() {
        Rank const end = std::min(best_, static_cast<Rank>(index_.rules_.size()));
        for (Rank rank = 0; rank < end; ++rank, ++effort_)
            if (MayTake(*index_.rules_[rank], call_) && Takes(*index_.rules_[rank], call_)) {
                best_ = rank;
                return;
            }
    }

    Rank Best() const { return best_; }
    std::size_t Effort() const { return effort_; }

  private:
    /// Visits the branch of the call's slot or the rest, whichever has the earlier first rule,
    /// since it is the likelier one to end the search. Returns the other one.
    Child VisitSplit(Split const& split, CallTraits const& traits) {
        Child const& branch = split.branches[traits.SlotAt(split.trait)];
        bool const isRestFirst = split.rest.first < branch.first;
        Child const& later = isRestFirst ? branch : split.rest;
        if (later.kind == Kind::None)
            return isRestFirst ? split.rest : branch;
        Visit(isRestFirst ? split.rest : branch, traits);
        return later;
    }

    /// Visits what is below for every origin that its bits do not rule out. Returns the rest.
    Child VisitOrigins(Origins const& node, CallTraits const& traits) {
        Word const* const bits = &index_.originBits_[node.bits];
        std::string_view const address = traits.Address(node.side);
        auto const slotAt = [address](std::size_t at) {
            return static_cast<std::uint32_t>(SlotOf(at < address.size() ? address[at] : '\0'));
        };
        std::size_t const few = node.characters;
        std::uint32_t const mask = (std::uint32_t{1} << 4 * few) - 1;
        std::uint32_t text = 0; // The slots of the few characters from origin on.
        for (std::size_t i = 0; i < few; ++i)
            text = text << 4 | slotAt(i);
        CallTraits traitsBelow = traits;
        for (std::size_t origin = 0; origin < address.size(); ++origin) {
            std::size_t const bit = node.BitOf(text);
            if ((bits[bit / kWordBits] >> bit % kWordBits & 1) != 0) {
                traitsBelow.SetOrigin(node.side, origin);
                Visit(node.below, traitsBelow);
            }
            text = (text << 4 | slotAt(origin + few)) & mask;
        }
        return node.rest;
    }

    void VisitLeaf(Leaf const& leaf, CallTraits const& traits) {
        Rank const* const ranks = &index_.ranks_[leaf.ranks];
        std::size_t const sets = SetsOfFilter(leaf);
        std::array<RuleSet const*, kMostFilters> filters; // The sets for the slots of the call.
        for (std::size_t f = 0; f < leaf.filterCount; ++f)
            filters[f] =
                &index_
                     .filters_[leaf.filters + (f * kSlots + traits.SlotAt(leaf.traits[f])) * sets];
        if (sets == 1) {
            Word passing = ~Word{0};
            for (std::size_t f = 0; f < leaf.filterCount; ++f)
                passing &= *filters[f];
            ++effort_;
            TestRules(ranks, passing);
            return;
        }
        std::size_t const words = sets / kSetsOfWord;
        std::size_t word = 0;
        for (; word + kTogether <= words; word += kTogether)
            TestWords<kTogether>(leaf, filters, word);
        for (; word < words; ++word)
            TestWords<1>(leaf, filters, word);
    }

    /// Filters the rules of some words of a leaf, and tests those that are left.
    template <std::size_t Words>
    void TestWords(Leaf const& leaf, std::array<RuleSet const*, kMostFilters> const& filters,
                   std::size_t word) {
        Rank const* const ranks = &index_.ranks_[leaf.ranks + word * kWordBits];
        if (ranks[0] >= best_)
            return;
        effort_ += Words;
        std::array<Word, Words> passing;
        passing.fill(~Word{0});
        for (std::size_t f = 0; f < leaf.filterCount; ++f)
            for (std::size_t w = 0; w < Words; ++w)
                passing[w] &= WordAt(filters[f] + (word + w) * kSetsOfWord);
        for (std::size_t w = 0; w < Words; ++w)
            TestRules(ranks + w * kWordBits, passing[w]);
    }

    static Word WordAt(RuleSet const* sets) {
        Word word;
        std::memcpy(&word, sets, sizeof word);
        return word;
    }

    void TestRules(Rank const* ranks, Word passing) {
        for (; passing != 0; passing &= passing - 1) {
            Rank const rank = ranks[LowestBit(passing)];
            if (rank >= best_ || ++effort_ > limit_)
                return;
            if (Takes(*index_.rules_[rank], call_))
                best_ = rank;
        }
    }

    RuleIndex const& index_;
    Call const& call_;
    Rank best_ = kNoRank;
    std::size_t effort_ = 0;
    std::size_t const limit_;
};

RuleIndex::Found RuleIndex::Find(Call const& call) const {
    Search search(*this, call);
    search.Visit(root_, CallTraits(call));
    if (search.HasGivenUp())
        search.Walk();
    Rank const best = search.Best();
    return {best == kNoRank ? nullptr : rules_[best], search.Effort()};
}

void RuleIndex::Clear() noexcept {
    root_ = {};
    buildSteps_ = 0;
    auto const free = [](auto& list) { std::decay_t<decltype(list)>().swap(list); };
    free(rules_);
    free(splits_);
    free(origins_);
    free(leaves_);
    free(ranks_);
    free(filters_);
    free(originBits_);
}

} // namespace CallRecordingUtils
