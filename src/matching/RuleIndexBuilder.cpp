// Builds the index. Where a rule is put follows from its traits; what a node asks for is a choice
// that cannot change an answer, only the time that it takes.

#include <algorithm>
#include <cstring>
#include <new>

#include "matching/RuleIndex.h"
#include "matching/TraitChoice.h"

namespace CallRecordingUtils {
namespace {

constexpr std::size_t kMostRules = std::size_t{1} << 28;
constexpr std::size_t kLongestWalked = 16; // A list of which the rules begin with literals.

// Leaves: fewer rules than the first are always one, and up to the second, unless origins help.
constexpr std::size_t kFewestBelow = 4;
constexpr std::size_t kLargestLeaf = 128;
constexpr std::size_t kFewFilters = 4; // Of a small leaf.

// Splits: a rule with more slots goes to the rest; copies of rules are not worth it where a leaf
// of them all is filtered as fast, and are limited to some beyond any two rules.
constexpr std::size_t kFewestApart = 2; // Of some pairs.
constexpr std::size_t kMostSlots = 8;
constexpr std::size_t kFewestCopied = 1025;
constexpr std::size_t kCopiesOfTwo = 3;

// Origins: each character of an address costs a search of its own. The bits tell of a few
// characters, of so many texts a rule on an average.
constexpr std::size_t kOriginPays = 4;
constexpr std::size_t kMostCharacters = 6;
constexpr std::size_t kTextsOfRule = 4;
constexpr std::size_t kBitsOfText = 16;
static_assert(kSlots == 1U << 4 && 4 * kMostCharacters < 32, "a number holds their slots");

template <typename Act>
void ForEachSlot(SlotSet slots, Act act) {
    for (Word rest = slots; rest != 0; rest &= rest - 1)
        act(LowestBit(rest));
}

/// Whether nearly all rules have a literal first on one side, which a walk compares at once.
bool BeginWithLiterals(std::vector<CallRecordingRuleParams const*> const& rules) {
    auto const others =
        std::count_if(rules.begin(), rules.end(), [](CallRecordingRuleParams const* rule) {
            return (rule->caller_pattern.empty() || !IsLiteral(rule->caller_pattern.front())) &&
                   (rule->called_pattern.empty() || !IsLiteral(rule->called_pattern.front()));
        });
    return 4 * static_cast<std::size_t>(others) <= rules.size();
}

} // namespace

class RuleIndex::Builder {
  public:
    explicit Builder(RuleIndex& index) : index_(index) {}

    void Build() {
        traits_.reserve(index_.rules_.size());
        Ranks all;
        for (CallRecordingRuleParams const* rule : index_.rules_) {
            all.push_back(static_cast<Rank>(traits_.size()));
            traits_.push_back(TraitsOf(*rule));
        }
        TraitSet const fixed = ~(MiddleTraits(0) | MiddleTraits(1));
        AddNodes(1);
        Make(0, all, {fixed, {true, true}, kCopiesOfTwo * all.size() / 2});
        index_.nodes_.shrink_to_fit();
        index_.ranks_.shrink_to_fit();
        index_.filters_.shrink_to_fit();
        index_.origins_.shrink_to_fit();
    }

  private:
    /// What may be done below a node.
    struct Scope {
        TraitSet open;                      // The traits that may be asked for.
        std::array<bool, 2> mayHaveOrigins; // For each side.
        std::size_t copies; // How many more places the rules may take than there are rules.

        /// A part of the scope, for some of all the places that the rules take.
        Scope Part(std::size_t places, std::size_t all) const {
            return {open, mayHaveOrigins, copies * places / all};
        }
    };

    /// Makes nodes_[at] the node of rules.
    void Make(std::uint32_t at, Ranks const& rules, Scope const& scope) {
        index_.nodes_[at].first = rules.front();
        TraitChoice const choice(traits_, rules);
        if (rules.size() < kFewestBelow || !MakeBranches(at, rules, scope, choice))
            MakeLeaf(at, rules, scope.open, choice);
    }

    /// Returns false when the rules are better off in a leaf.
    bool MakeBranches(std::uint32_t at, Ranks const& rules, Scope const& scope,
                      TraitChoice const& choice) {
        auto const [fixed, middle] = choice.Best(scope.open);
        for (std::size_t side = 0; side < 2; ++side)
            if (scope.mayHaveOrigins[side] &&
                middle[side].apart > kOriginPays * fixed.apart + kFewestApart) {
                MakeOrigins(at, rules, scope, side);
                return true;
            }
        return rules.size() > kLargestLeaf && fixed.apart >= kFewestApart &&
               MakeSplit(at, rules, scope, fixed.trait);
    }

    void MakeOrigins(std::uint32_t at, Ranks const& rules, Scope const& scope, std::size_t side) {
        Ranks below, rest;
        for (Rank const rule : rules)
            (traits_[rule][FirstTrait(side, View::Middle)] == kAnySlot ? rest : below)
                .push_back(rule);
        index_.nodes_[at].kind = Kind::Origins;
        index_.nodes_[at].side = static_cast<std::uint8_t>(side);
        AddOriginBits(index_.nodes_[at], below);
        Scope outside = scope.Part(rest.size(), rules.size());
        outside.mayHaveOrigins[side] = false;
        AddRest(at, rest, outside);
        Scope inside = scope.Part(below.size(), rules.size());
        inside.open |= MiddleTraits(side);
        inside.mayHaveOrigins = {false, false}; // Else the time would grow with their product.
        std::uint32_t const branch = AddNodes(1);
        index_.nodes_[at].begin = branch;
        Make(branch, below, inside);
    }

    /// Adds the bits of a node of origins: of as many characters as it costs little to find all
    /// texts of, and so many bits that few of them are set.
    void AddOriginBits(Node& node, Ranks const& rules) {
        std::size_t characters = 1;
        while (characters < kMostCharacters &&
               TextsOf(rules, node.side, characters + 1) <= kTextsOfRule * rules.size())
            ++characters;
        std::size_t const wanted = kBitsOfText * TextsOf(rules, node.side, characters);
        std::size_t log = LowestBit(kWordBits);
        while (log < kOriginBits - 1 && std::size_t{1} << log < wanted)
            ++log;
        node.size = static_cast<std::uint32_t>(characters);
        node.shift = static_cast<std::uint8_t>(kOriginBits - log);
        node.bits = static_cast<std::uint32_t>(index_.origins_.size());
        index_.origins_.resize(node.bits + (std::size_t{1} << log) / kWordBits);
        for (Rank const rule : rules)
            SetOriginBits(node, &traits_[rule][FirstTrait(node.side, View::Middle)], characters, 0);
    }

    std::size_t TextsOf(Ranks const& rules, std::size_t side, std::size_t characters) const {
        std::size_t all = 0;
        for (Rank const rule : rules) {
            std::size_t texts = 1;
            for (std::size_t i = 0; i < characters; ++i)
                texts *= CountBits(traits_[rule][FirstTrait(side, View::Middle) + i]);
            all += texts;
        }
        return all;
    }

    void SetOriginBits(Node const& node, SlotSet const* middle, std::size_t characters,
                       std::uint32_t before) {
        if (characters == 0) {
            std::size_t const bit = OriginBit(before, node.shift);
            index_.origins_[node.bits + bit / kWordBits] |= Word{1} << bit % kWordBits;
            return;
        }
        ForEachSlot(*middle, [&](std::size_t slot) {
            SetOriginBits(node, middle + 1, characters - 1,
                          before << 4 | static_cast<std::uint32_t>(slot));
        });
    }

    /// Returns false when there would be no branches.
    bool MakeSplit(std::uint32_t at, Ranks const& rules, Scope const& scope, std::size_t trait) {
        std::size_t copies = 0;
        std::size_t const mostSlots =
            MostSlots(rules, trait, rules.size() < kFewestCopied ? 0 : scope.copies, copies);
        std::array<Ranks, kSlots> branches;
        Ranks rest;
        for (Rank const rule : rules)
            if (CountBits(traits_[rule][trait]) > mostSlots)
                rest.push_back(rule);
            else
                ForEachSlot(traits_[rule][trait],
                            [&](std::size_t slot) { branches[slot].push_back(rule); });
        if (rest.size() == rules.size())
            return false;
        Scope below = scope;
        below.open.reset(trait);
        below.copies -= copies;
        index_.nodes_[at].kind = Kind::Split;
        index_.nodes_[at].traits[0] = kTraitTable[trait];
        std::size_t const places = rules.size() + copies;
        AddRest(at, rest, below.Part(rest.size(), places));
        AddBranches(at, branches, below, places);
        return true;
    }

    /// Returns with how many slots at the most a rule is put into the branches of all of them, so
    /// that no more copies arise than there may be; copies is how many do.
    std::size_t MostSlots(Ranks const& rules, std::size_t trait, std::size_t allowed,
                          std::size_t& copies) const {
        std::array<std::size_t, kSlots + 1> rulesWith{};
        for (Rank const rule : rules)
            ++rulesWith[CountBits(traits_[rule][trait])];
        std::size_t most = 1;
        while (most < kMostSlots && copies + rulesWith[most + 1] * most <= allowed) {
            copies += rulesWith[most + 1] * most;
            ++most;
        }
        return most;
    }

    void AddBranches(std::uint32_t at, std::array<Ranks, kSlots> const& branches,
                     Scope const& below, std::size_t places) {
        auto const used = std::count_if(branches.begin(), branches.end(),
                                        [](Ranks const& branch) { return !branch.empty(); });
        std::uint32_t const begin = AddNodes(static_cast<std::uint32_t>(used));
        index_.nodes_[at].begin = begin;
        std::uint8_t made = 0;
        for (std::size_t slot = 0; slot < kSlots; ++slot) {
            if (branches[slot].empty())
                continue;
            Make(begin + made, branches[slot], below.Part(branches[slot].size(), places));
            index_.nodes_[at].branch[slot] = ++made;
        }
    }

    void AddRest(std::uint32_t at, Ranks const& rest, Scope const& scope) {
        if (rest.empty())
            return;
        std::uint32_t const node = AddNodes(1);
        index_.nodes_[at].rest = node;
        Make(node, rest, scope);
    }

    std::uint32_t AddNodes(std::uint32_t count) {
        auto const first = static_cast<std::uint32_t>(index_.nodes_.size());
        index_.nodes_.resize(first + count);
        return first;
    }

    void MakeLeaf(std::uint32_t at, Ranks const& rules, TraitSet const& open,
                  TraitChoice const& choice) {
        Node& leaf = index_.nodes_[at];
        leaf.begin = static_cast<std::uint32_t>(index_.ranks_.size());
        leaf.size = static_cast<std::uint32_t>(rules.size());
        leaf.bits = static_cast<std::uint32_t>(index_.filters_.size());
        index_.ranks_.insert(index_.ranks_.end(), rules.begin(), rules.end());
        std::vector<std::size_t> filters =
            choice.Filters(open, rules.size() <= kSmallLeaf ? kFewFilters : kMostFilters);
        if (filters.empty())
            filters.push_back(0); // Any one: it tells which bits are those of rules.
        std::transform(filters.begin(), filters.end(), leaf.traits.begin(),
                       [](std::size_t trait) { return kTraitTable[trait]; });
        leaf.filterCount = static_cast<std::uint8_t>(filters.size());
        for (std::size_t const trait : filters)
            AddFilter(rules, trait, SetsOfFilter(leaf));
    }

    void AddFilter(Ranks const& rules, std::size_t trait, std::size_t sets) {
        std::size_t const begin = index_.filters_.size();
        index_.filters_.resize(begin + kSlots * sets);
        RuleSet* const filter = &index_.filters_[begin];
        for (std::size_t i = 0; i < rules.size(); ++i)
            ForEachSlot(traits_[rules[i]][trait],
                        [&](std::size_t slot) { AddRule(filter + slot * sets, sets, i); });
    }

    /// Adds rule i of a leaf to a set of its rules. Words are what is read of a large one.
    static void AddRule(RuleSet* set, std::size_t sets, std::size_t i) {
        if (sets == 1) {
            *set = static_cast<RuleSet>(*set | 1U << i);
            return;
        }
        Word word;
        RuleSet* const at = set + i / kWordBits * kSetsOfWord;
        std::memcpy(&word, at, sizeof word);
        word |= Word{1} << i % kWordBits;
        std::memcpy(at, &word, sizeof word);
    }

    RuleIndex& index_;
    std::vector<RuleTraits> traits_; // Of each rule.
};

void RuleIndex::Build(std::list<CallRecordingRuleParams*> const& rules) noexcept {
    Clear();
    isRecordLent_.store(false, std::memory_order_relaxed); // Those that were lent are gone.
    if (rules.size() > kMostRules || isListLent_)
        return;
    try {
        rules_.reserve(rules.size());
        for (CallRecordingRuleParams const* rule : rules)
            if (rule != nullptr)
                rules_.push_back(rule);
        if (rules_.size() > kLongestWalked || !BeginWithLiterals(rules_))
            Builder(*this).Build();
    } catch (std::bad_alloc const&) {
        Clear();
    }
}

} // namespace CallRecordingUtils
