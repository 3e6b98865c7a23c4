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
        for (;;) {
            Node const& node = index_.nodes_[at];
            if (node.first >= best_ || ++effort_ > limit_)
                return;
            switch (node.kind) {
            case Kind::Leaf: VisitLeaf(node); return;
            case Kind::Split: VisitBranch(node); break;
            case Kind::Origins: VisitOrigins(node); break;
            }
            if (node.rest == 0)
                return;
            at = node.rest;
        }
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
    void VisitBranch(Node const& node) {
        std::uint8_t const branch = node.branch[traits_.SlotAt(node.traits[0])];
        if (branch == 0)
            return;
        std::uint32_t const at = node.begin + branch - 1;
        // What comes first in the list is the likelier to end the search.
        if (node.rest != 0 && index_.nodes_[node.rest].first < index_.nodes_[at].first)
            Visit(node.rest);
        Visit(at);
    }

    void VisitOrigins(Node const& node) {
        Word const* const bits = &index_.origins_[node.bits];
        std::string_view const address = traits_.Address(node.side);
        auto const slotAt = [address](std::size_t at) {
            return SlotOf(at < address.size() ? address[at] : '\0');
        };
        std::size_t const few = node.size;
        std::size_t characters = 0; // The slots of the next few, four bits each.
        for (std::size_t i = 0; i < few; ++i)
            characters = characters * kSlots + slotAt(i);
        for (std::size_t origin = 0; origin < address.size(); ++origin) {
            if ((bits[characters / kWordBits] >> characters % kWordBits & 1) != 0) {
                traits_.SetOrigin(node.side, origin);
                Visit(node.begin);
            }
            characters = (characters * kSlots + slotAt(origin + few)) % OriginBits(few);
        }
    }

    void VisitLeaf(Node const& leaf) {
        std::array<std::size_t, kMostFilters> slots;
        for (std::size_t f = 0; f < leaf.filterCount; ++f)
            slots[f] = traits_.SlotAt(leaf.traits[f]);
        Rank const* const ranks = &index_.ranks_[leaf.begin];
        RuleSet const* filters = index_.filters_.data() + leaf.bits;
        std::size_t const sets = SetsOfBlock(leaf);
        for (std::size_t i = 0; i < leaf.size && ranks[i] < best_; i += sets * kSmallBlock) {
            Word passing =
                ~Word{0} >> (kWordBits - std::min<std::size_t>(leaf.size - i, kWordBits));
            for (std::size_t f = 0; f < leaf.filterCount; ++f, filters += kSlots * sets)
                passing &= sets == 1 ? filters[slots[f]] : WordAt(filters + slots[f] * sets);
            TestRules(ranks + i, passing);
            ++effort_;
        }
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
