// The search in the index. The other half is in RuleIndexBuilder.cpp.

#include "matching/RuleIndex.h"

#include <algorithm>
#include <cstring>

#include "common/Bits.h"

namespace CallRecordingUtils {

/// One search: how far it has come is the best rule found up to now. No rule behind that is looked
/// at, and no node of which all rules are behind it.
class RuleIndex::Search {
  public:
    Search(RuleIndex const& index, Call const& call)
        : index_(index), call_(call), traits_(call), limit_(index.rules_.size() / 8 + 32) {}

    /// Looks at the rules below a node. The depth is limited: on the way to a leaf no trait is
    /// asked for twice.
    void Visit(std::uint32_t at) {
        do {
            Node const& node = index_.nodes_[at];
            if (node.first >= best_ || ++effort_ > limit_)
                return;
            switch (node.kind) {
            case Kind::Leaf: VisitLeaf(node); return;
            case Kind::Split: at = VisitSplit(node); break;
            case Kind::Origins:
                VisitOrigins(node);
                at = node.rest;
                break;
            }
        } while (at != 0);
    }

    /// Looks at all rules before the best one. A search does so when the tree does not help: where
    /// many rules are alike, and each of them would be tested for many origins.
    void Walk() {
        Rank const end = std::min(best_, static_cast<Rank>(index_.rules_.size()));
        for (Rank rank = 0; rank < end; ++rank, ++effort_)
            if (TakesAfterAll(*index_.rules_[rank], call_)) {
                best_ = rank;
                return;
            }
    }

    bool HasGivenUp() const { return effort_ > limit_; }
    Rank Best() const { return best_; }
    std::size_t Effort() const { return effort_; }

  private:
    /// Of the branch for the call and the rest looks at the one that comes first in the list, which
    /// is the likelier to end the search, and returns the other, or the only one; 0: there is none.
    std::uint32_t VisitSplit(Node const& node) {
        std::uint8_t const branch = node.branch[traits_.SlotAt(node.traits[0])];
        if (branch == 0)
            return node.rest;
        std::uint32_t const own = node.begin + branch - 1;
        if (node.rest == 0)
            return own;
        bool const isRestFirst = index_.nodes_[node.rest].first < index_.nodes_[own].first;
        Visit(isRestFirst ? node.rest : own);
        return isRestFirst ? own : node.rest;
    }

    void VisitOrigins(Node const& node) {
        Word const* const bits = &index_.origins_[node.bits];
        std::string_view const address = traits_.Address(node.side);
        auto const slotAt = [address](std::size_t at) {
            return static_cast<std::uint32_t>(SlotOf(at < address.size() ? address[at] : '\0'));
        };
        std::size_t const few = node.size;
        std::uint32_t const mask = (std::uint32_t{1} << 4 * few) - 1;
        std::uint32_t characters = 0; // The slots of the next few.
        for (std::size_t i = 0; i < few; ++i)
            characters = characters << 4 | slotAt(i);
        for (std::size_t origin = 0; origin < address.size(); ++origin) {
            std::size_t const bit = OriginBit(characters, node.shift);
            if ((bits[bit / kWordBits] >> bit % kWordBits & 1) != 0) {
                traits_.SetOrigin(node.side, origin);
                Visit(node.begin);
            }
            characters = (characters << 4 | slotAt(origin + few)) & mask;
        }
    }

    void VisitLeaf(Node const& leaf) {
        Rank const* const ranks = &index_.ranks_[leaf.begin];
        std::size_t const sets = SetsOfFilter(leaf);
        std::array<RuleSet const*, kMostFilters> filters; // For the slots that the call has.
        for (std::size_t f = 0; f < leaf.filterCount; ++f)
            filters[f] =
                &index_.filters_[leaf.bits + (f * kSlots + traits_.SlotAt(leaf.traits[f])) * sets];
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
    void TestWords(Node const& leaf, std::array<RuleSet const*, kMostFilters> const& filters,
                   std::size_t word) {
        Rank const* const ranks = &index_.ranks_[leaf.begin + word * kWordBits];
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
    CallTraits traits_;
    Rank best_ = kNoRank;
    std::size_t effort_ = 0;
    std::size_t const limit_;
};

RuleIndex::Decision RuleIndex::Decide(Call const& call) const {
    Search search(*this, call);
    search.Visit(0);
    if (search.HasGivenUp())
        search.Walk();
    Rank const best = search.Best();
    return {best == kNoRank ? nullptr : rules_[best], search.Effort()};
}

void RuleIndex::Clear() noexcept {
    // Assigning an empty list would keep the memory.
    decltype(rules_)().swap(rules_);
    decltype(nodes_)().swap(nodes_);
    decltype(ranks_)().swap(ranks_);
    decltype(filters_)().swap(filters_);
    decltype(origins_)().swap(origins_);
}

} // namespace CallRecordingUtils
