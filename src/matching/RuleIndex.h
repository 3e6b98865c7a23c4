// The rules of a list, arranged so that a decision looks at few of them.
//
// It cannot change an answer, for four reasons.
//
// It never says that a rule takes a call. Takes of Decision.h does, which every step of a walk asks
// as well, on the record as it is at that moment; so a state that is changed counts at once.
//
// It leaves a rule out only for what no call has that the rule takes: the traits that TraitsOf
// reads off the patterns. When it is not sure, a trait of a rule is "any", and the rule is looked
// at.
//
// It leaves out rules behind the first one found, and no others, for their place.
//
// What it was built from is patterns, call types and order. Who can change those has been lent the
// list or a record; from then on it is not used.
//
// tests/index_test.cpp compares it with the walk.

#ifndef MATCHING_RULEINDEX_H
#define MATCHING_RULEINDEX_H

#include <array>
#include <atomic>
#include <cstdint>
#include <limits>
#include <list>
#include <vector>

#include <callrecordingutils/CallRecordingRuleParams.h>

#include "common/Bits.h"
#include "matching/Decision.h"
#include "matching/RuleTraits.h"

namespace CallRecordingUtils {

/// Finds the rule that decides a call.
///
/// It is a tree. A split asks for one trait of the call. The rules below it that have a slot there
/// are in the branch of that slot, and a rule with a few slots is in a few branches; those for
/// which any slot will do, or many, are in the rest. A call goes on to the branch of its own slot
/// and to the rest. Where rules have nothing at fixed places, a node of origins makes the call try
/// each character of its address as the origin of the middle traits, so that a literal in the
/// middle of a pattern is looked for at every place; bits for the first few characters tell at once
/// where it cannot be. In a leaf some more traits are compared, for many rules at a time, and the
/// rules left are tested in list order.
class RuleIndex {
  public:
    RuleIndex() = default;
    RuleIndex(RuleIndex const&) = delete;
    RuleIndex& operator=(RuleIndex const&) = delete;

    /// Arranges the rules of a list. Short lists are left to the walk, and so are all when the
    /// memory does not suffice. The records that were lent count as returned.
    void Build(std::list<CallRecordingRuleParams*> const& rules) noexcept;

    /// Forgets the rules.
    void Clear() noexcept;

    /// Somebody is lent a record, until the next Build; or the list, for good. May be called beside
    /// decisions.
    void LendRecord() { isRecordLent_.store(true, std::memory_order_relaxed); }
    void LendList() { isListLent_.store(true, std::memory_order_relaxed); }

    /// Whether Decide may be asked; else the list has to be walked.
    bool IsUsable() const {
        return !nodes_.empty() && !isRecordLent_.load(std::memory_order_relaxed) &&
               !isListLent_.load(std::memory_order_relaxed);
    }

    struct Decision {
        CallRecordingRuleParams const* rule; // The first of the list that takes the call, or null.
        std::size_t effort; // How many nodes, words of a leaf and rules were looked at.
    };
    /// REQUIRES: IsUsable().
    Decision Decide(Call const& call) const;

  private:
    using Rank = std::uint32_t; // The place of a rule in the list, null entries not counted.
    static constexpr Rank kNoRank = std::numeric_limits<Rank>::max();

    enum class Kind : std::uint8_t { Leaf, Split, Origins };
    static constexpr std::size_t kMostFilters = 8;

    struct Node {
        Rank first = 0; // The first rule below.
        // Leaf: its first rule in ranks_. Else: its first branch in nodes_.
        std::uint32_t begin = 0;
        // Leaf: how many rules. Origins: how many characters the bits tell of.
        std::uint32_t size = 0;
        std::uint32_t bits = 0; // Leaf: its filters in filters_. Origins: its bits in origins_.
        std::uint32_t rest = 0; // The node of the rest; 0: there is none.
        std::array<Trait, kMostFilters> traits{}; // Leaf: of the filters. Split: the one asked for.
        std::array<std::uint8_t, kSlots> branch{}; // Split: of each slot, counted from 1; 0: none.
        Kind kind = Kind::Leaf;
        std::uint8_t filterCount = 0; // Leaf.
        std::uint8_t side = 0;        // Origins: of the call.
        std::uint8_t shift = 0;       // Origins: see OriginBit.
    };

    /// A leaf has for each of its filters, a trait, and for each slot the set of the rules that
    /// have the slot there, a bit for each rule: 16 bits, or in a large leaf as many words as it
    /// takes. It has one filter at least, so that only bits of rules are left by all.
    using RuleSet = std::uint16_t;
    static constexpr std::size_t kSmallLeaf = 16;
    static constexpr std::size_t kSetsOfWord = kWordBits / kSmallLeaf;
    static constexpr std::size_t SetsOfFilter(Node const& leaf) {
        return leaf.size <= kSmallLeaf ? 1 : (leaf.size + kWordBits - 1) / kWordBits * kSetsOfWord;
    }
    static constexpr std::size_t kTogether = 8; // Words, which a processor may do at once.

    /// The bits of a node of origins are those of the texts of a few characters that rules have
    /// there, told by the slots of these: a number of four bits for each, which is spread over as
    /// many bits as shift leaves. Several texts may share one.
    static constexpr std::size_t kOriginBits = 32;
    static constexpr std::size_t OriginBit(std::uint32_t characters, std::uint8_t shift) {
        return static_cast<std::uint32_t>(characters * 0x9e3779b1U) >> shift;
    }

    class Builder;
    class Search;

    std::vector<CallRecordingRuleParams const*> rules_;
    std::vector<Node> nodes_; // The root in front; a node's branches one after the other.
    std::vector<Rank> ranks_; // The rules of the leaves, in list order in each.
    std::vector<RuleSet> filters_;
    std::vector<Word> origins_;
    std::atomic<bool> isRecordLent_{false};
    std::atomic<bool> isListLent_{false};
};

/// Returns the rule that decides call, or null when none does: by index, which was built of rules,
/// where it may be asked, else by a walk.
inline CallRecordingRuleParams const*
DecidingRecord(std::list<CallRecordingRuleParams*> const& rules, RuleIndex const& index,
               Call const& call) {
    if (index.IsUsable())
        return index.Decide(call).rule;
    auto const deciding = DecidingRule(rules, call);
    return deciding == rules.end() ? nullptr : *deciding;
}

} // namespace CallRecordingUtils

#endif
