// The rules of a list, arranged so that a decision looks at few of them.
//
// The index cannot change a decision, for four reasons.
//
// It never says that a rule takes a call. Takes of Decision.h says so, as in a walk over the list,
// and looks at the record as it is at that moment; so a changed state counts at once.
//
// It leaves a rule out only when the call lacks a trait of the rule, which TraitsOf has read from
// the patterns. Every call that the rule takes has it: where TraitsOf is not sure, any slot will
// do.
//
// It leaves out the rules after one that was found to take the call, since the first rule decides.
//
// It is built from patterns, call types and order. These can only be changed by somebody who was
// lent the list or a record, and from then on the index is not used.
//
// tests/index_test.cpp compares it with a walk, and checks the traits themselves.

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
/// The index is a tree with three kinds of nodes:
///
/// A split looks at one trait of the call. It has a branch for each slot, which holds the rules
/// that accept this slot there; a rule that accepts a few slots is in a few branches. Rules that
/// accept any slot, or many, are in the rest. The search goes on in the branch of the call's slot
/// and in the rest.
///
/// A node of origins is there for rules without anything at fixed places, such as *123*. The search
/// goes on below it once for each character of the address, with that character as the origin of
/// the middle traits. Bits for the first few characters tell at once where that would be in vain.
///
/// A leaf holds rules in list order. It compares some more traits, for many rules at a time, and
/// tests the rules that are left.
class RuleIndex {
  public:
    RuleIndex() = default;
    RuleIndex(RuleIndex const&) = delete;
    RuleIndex& operator=(RuleIndex const&) = delete;

    /// Arranges the rules of a list. Short lists are left to the walk, and so is every list when
    /// memory runs out. Records that were lent count as returned. Building takes no longer than
    /// loading the rules did, or a few milliseconds, whatever the rules are.
    void Build(std::list<CallRecordingRuleParams*> const& rules) noexcept;

    /// What the last Build cost, in steps of some nanoseconds.
    std::size_t BuildSteps() const { return buildSteps_; }

    /// Forgets the rules.
    void Clear() noexcept;

    /// Says that somebody has been lent a record, until the next Build; or the list, for good. May
    /// be called while other threads decide.
    void LendRecord() { isRecordLent_.store(true, std::memory_order_relaxed); }
    void LendList() { isListLent_.store(true, std::memory_order_relaxed); }

    /// Returns whether Find may be called; if not, the list has to be walked.
    bool IsUsable() const {
        return root_.kind != Kind::None && !isRecordLent_.load(std::memory_order_relaxed) &&
               !isListLent_.load(std::memory_order_relaxed);
    }

    struct Found {
        CallRecordingRuleParams const* rule; // The first of the list that takes the call, or null.
        std::size_t effort; // How many nodes, words of a leaf and rules were looked at.
    };
    /// REQUIRES: IsUsable().
    Found Find(Call const& call) const;

  private:
    using Rank = std::uint32_t; // The place of a rule in the list, null entries not counted.
    static constexpr Rank kNoRank = std::numeric_limits<Rank>::max();

    enum class Kind : std::uint8_t { None, Leaf, Split, Origins };

    /// A reference to a node, with what has to be known before it is visited.
    struct Child {
        Rank first = kNoRank;    // The first rule below it.
        std::uint32_t place = 0; // In the list of its kind.
        Kind kind = Kind::None;
    };

    struct Split {
        Trait trait;
        std::array<Child, kSlots> branches;
        Child rest;
    };

    /// A node of origins. The slots of the first few characters that a rule has from its origin on
    /// are written as a number, four bits for each. The numbers are hashed, and each has a bit in
    /// originBits_; several may share one.
    struct Origins {
        Child below;
        Child rest;             // Rules without anything at an origin.
        std::uint32_t bits = 0; // Where its bits begin in originBits_.
        std::uint8_t side = 0;
        std::uint8_t characters = 0;
        std::uint8_t shift = 0; // Leaves as many bits of the hash as the node has room for.

        std::size_t BitOf(std::uint32_t text) const {
            return static_cast<std::uint32_t>(text * 0x9e3779b1U) >> shift;
        }
    };
    static constexpr std::size_t kHashBits = 32;

    /// A leaf has some filters. A filter belongs to a trait, and holds for each slot the set of
    /// those rules of the leaf that accept the slot there. There is at least one, which clears the
    /// bits of a word that no rule has.
    static constexpr std::size_t kMostFilters = 8;
    struct Leaf {
        std::uint32_t ranks = 0;   // Where its rules begin in ranks_,
        std::uint32_t size = 0;    // and how many there are.
        std::uint32_t filters = 0; // Where its filters begin in filters_,
        std::uint32_t filterCount = 0;
        std::array<Trait, kMostFilters> traits{}; // and the traits of these.
    };

    /// A set of rules of a leaf has a bit for each: 16 bits, or in a large leaf whole words.
    using RuleSet = std::uint16_t;
    static constexpr std::size_t kSmallLeaf = 16;
    static constexpr std::size_t kSetsOfWord = kWordBits / kSmallLeaf;
    static constexpr std::size_t SetsOfFilter(Leaf const& leaf) {
        return leaf.size <= kSmallLeaf ? 1 : (leaf.size + kWordBits - 1) / kWordBits * kSetsOfWord;
    }
    static constexpr std::size_t kTogether = 8; // Words that a processor may work on at once.

    class Builder;
    class Search;

    std::vector<CallRecordingRuleParams const*> rules_;
    Child root_;
    std::vector<Split> splits_;
    std::vector<Origins> origins_;
    std::vector<Leaf> leaves_;
    std::vector<Rank> ranks_; // The rules of the leaves, in list order in each.
    std::vector<RuleSet> filters_;
    std::vector<Word> originBits_;
    std::size_t buildSteps_ = 0;
    std::atomic<bool> isRecordLent_{false};
    std::atomic<bool> isListLent_{false};
};

/// Returns the rule that decides call, or null when none does. Asks index, which was built from
/// rules, where it may be asked, and walks the list otherwise.
inline CallRecordingRuleParams const*
DecidingRecord(std::list<CallRecordingRuleParams*> const& rules, RuleIndex const& index,
               Call const& call) {
    if (index.IsUsable())
        return index.Find(call).rule;
    auto const deciding = FirstTaking(rules, call);
    return deciding == rules.end() ? nullptr : *deciding;
}

} // namespace CallRecordingUtils

#endif
