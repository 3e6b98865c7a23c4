// Builds the index. Where a rule is put follows from its traits. Which trait a node looks at is a
// choice, which changes the time that a decision takes but never the decision.

#include <algorithm>
#include <cstring>
#include <new>

#include "matching/RuleIndex.h"
#include "matching/TraitChoice.h"

namespace CallRecordingUtils {
namespace {

constexpr std::size_t kMostRules = std::size_t{1} << 28;
constexpr std::size_t kLongestWalked = 16; // A list whose rules begin with literals.

// Building must not take longer than loading did, so it is counted in steps of one to three
// nanoseconds. Reading the traits of a rule and putting it into leaves take a bounded number of
// them. Branches are made as long as steps are left: some milliseconds, and for each rule about as
// many as loading one takes at the least, which grows with the lines that its section must have.
constexpr std::size_t kFreeSteps = 1000000;
constexpr std::size_t kStepsOfRule = 110;
constexpr std::size_t kStepsOfLine = 35;
constexpr std::size_t kStepsOfNode = 1200; // The choice of its trait compares all traits.
constexpr std::size_t kStepsOfPlace = 24;  // For a rule in a node.
constexpr std::size_t kStepsOfFilter = 4;  // For a rule in a leaf.

// Leaves: fewer rules than kFewestBelow always become a leaf, and up to kLargestLeaf unless origins
// help.
constexpr std::size_t kFewestBelow = 4;
constexpr std::size_t kLargestLeaf = 128;
constexpr std::size_t kFewFilters = 4; // Of a small leaf.

// Splits: a rule that accepts more than kMostSlots slots goes to the rest. Copies of rules do not
// help where one leaf with all of them is filtered as fast. Longer lists may have three for two
// rules.
constexpr std::size_t kFewestApart = 2; // Of some pairs of rules.
constexpr std::size_t kMostSlots = 8;
constexpr std::size_t kFewestCopied = 1025;
constexpr std::size_t kCopiesOfTwo = 3;

// Origins: each character of an address costs a search of its own. The bits cover as many
// characters as keep the number of different texts small.
constexpr std::size_t kOriginPays = 4;
constexpr std::size_t kMostCharacters = 6;
constexpr std::size_t kTextsOfRule = 4; // On average.
constexpr std::size_t kBitsOfText = 16;
static_assert(kSlots == 1U << 4 && 4 * kMostCharacters < 32, "a number holds their slots");

template <typename Act>
void ForEachSlot(SlotSet slots, Act act) {
    for (Word rest = slots; rest != 0; rest &= rest - 1)
        act(LowestBit(rest));
}

/// Returns whether most rules begin with a literal on one side, so that a walk is fast.
bool BeginWithLiterals(std::vector<CallRecordingRuleParams const*> const& rules) {
    auto const beginsWithLiteral = [](std::string const& pattern) {
        return !pattern.empty() && IsLiteral(pattern.front());
    };
    auto const others =
        std::count_if(rules.begin(), rules.end(), [&](CallRecordingRuleParams const* rule) {
            return !beginsWithLiteral(rule->caller_pattern) &&
                   !beginsWithLiteral(rule->called_pattern);
        });
    return 4 * static_cast<std::size_t>(others) <= rules.size();
}

} // namespace

class RuleIndex::Builder {
  public:
    explicit Builder(RuleIndex& index) : index_(index) {}

    void Build() {
        std::size_t const size = index_.rules_.size();
        traits_.reserve(size);
        Ranks all;
        all.reserve(size);
        for (CallRecordingRuleParams const* rule : index_.rules_) {
            all.push_back(static_cast<Rank>(traits_.size()));
            traits_.push_back(TraitsOf(*rule, steps_));
            mostSteps_ += StepsFor(*rule);
        }
        TraitSet const fixed = ~(MiddleTraits(0) | MiddleTraits(1));
        index_.root_ = Make(all, {fixed, {true, true}, kCopiesOfTwo * size / 2});
        index_.buildSteps_ = steps_;
        auto const shrink = [](auto&... lists) { (lists.shrink_to_fit(), ...); };
        shrink(index_.splits_, index_.origins_, index_.leaves_, index_.ranks_, index_.filters_,
               index_.originBits_);
    }

  private:
    /// What may be done below a node.
    struct Scope {
        TraitSet open;                      // The traits that may be looked at.
        std::array<bool, 2> mayHaveOrigins; // For each side.
        std::size_t copies; // How many more places the rules may take than there are rules.

        /// The scope for some of the places that the rules take.
        Scope Part(std::size_t places, std::size_t all) const {
            return {open, mayHaveOrigins, copies * places / all};
        }
    };

    bool HasStepsLeft() const { return steps_ < mostSteps_; }

    /// How many steps rule adds to those of the branches.
    static std::size_t StepsFor(CallRecordingRuleParams const& rule) {
        std::size_t const lines =
            (rule.callrecordingrule_id > 0 ? 1 : 0) + (rule.record_to.empty() ? 0 : 1) +
            (rule.recording_duration.empty() ? 0 : 1) + (rule.description.empty() ? 0 : 1);
        return kStepsOfRule + kStepsOfLine * lines;
    }

    /// Makes the node of rules, and all nodes below it.
    Child Make(Ranks const& rules, Scope const& scope) {
        if (rules.empty())
            return {};
        steps_ += kStepsOfNode + kStepsOfPlace * rules.size();
        TraitChoice const choice(traits_, rules);
        Child node{rules.front(), 0, Kind::None};
        if (rules.size() >= kFewestBelow && HasStepsLeft())
            MakeBranches(node, rules, scope, choice);
        if (node.kind == Kind::None)
            MakeLeaf(node, rules, scope.open, choice);
        return node;
    }

    /// Leaves node as it is when the rules are better off in a leaf.
    void MakeBranches(Child& node, Ranks const& rules, Scope const& scope,
                      TraitChoice const& choice) {
        TraitChoice::Choice const fixed = choice.Best(scope.open);
        for (std::size_t side = 0; side < 2; ++side)
            if (scope.mayHaveOrigins[side] &&
                choice.Best(MiddleTraits(side)).apart > kOriginPays * fixed.apart + kFewestApart) {
                MakeOrigins(node, rules, scope, side);
                return;
            }
        if (rules.size() > kLargestLeaf && fixed.apart >= kFewestApart)
            MakeSplit(node, rules, scope, fixed.trait);
    }

    void MakeOrigins(Child& node, Ranks const& rules, Scope const& scope, std::size_t side) {
        Ranks below, rest;
        for (Rank const rule : rules)
            (Middle(rule, side)[0] == kAnySlot ? rest : below).push_back(rule);
        Origins origins;
        origins.side = static_cast<std::uint8_t>(side);
        AddOriginBits(origins, below);
        Scope outside = scope.Part(rest.size(), rules.size());
        outside.mayHaveOrigins[side] = false;
        origins.rest = Make(rest, outside);
        Scope inside = scope.Part(below.size(), rules.size());
        inside.open |= MiddleTraits(side);
        inside.mayHaveOrigins = {false, false}; // Or a search would try each pair of origins.
        origins.below = Make(below, inside);
        Add(node, Kind::Origins, index_.origins_, origins);
    }

    SlotSet const* Middle(Rank rule, std::size_t side) const {
        return &traits_[rule][FirstTrait(side, View::Middle)];
    }

    /// Adds the bits of a node of origins: for as many characters as have few different texts, and
    /// enough bits that few of them are set.
    void AddOriginBits(Origins& node, Ranks const& rules) {
        std::size_t characters = 1;
        while (characters < kMostCharacters &&
               TextsOf(rules, node.side, characters + 1) <= kTextsOfRule * rules.size())
            ++characters;
        std::size_t const wanted = kBitsOfText * TextsOf(rules, node.side, characters);
        std::size_t log = LowestBit(kWordBits);
        while (log < kHashBits - 1 && std::size_t{1} << log < wanted)
            ++log;
        node.characters = static_cast<std::uint8_t>(characters);
        node.shift = static_cast<std::uint8_t>(kHashBits - log);
        node.bits = static_cast<std::uint32_t>(index_.originBits_.size());
        index_.originBits_.resize(node.bits + (std::size_t{1} << log) / kWordBits);
        for (Rank const rule : rules)
            SetOriginBits(node, Middle(rule, node.side), characters, 0);
    }

    std::size_t TextsOf(Ranks const& rules, std::size_t side, std::size_t characters) {
        std::size_t all = 0;
        for (Rank const rule : rules) {
            std::size_t texts = 1;
            for (std::size_t i = 0; i < characters; ++i)
                texts *= CountBits(Middle(rule, side)[i]);
            all += texts;
        }
        steps_ += rules.size() * characters;
        return all;
    }

    /// Sets the bits of all texts that begin with text and go on with `characters` more.
    void SetOriginBits(Origins const& node, SlotSet const* middle, std::size_t characters,
                       std::uint32_t text) {
        if (characters == 0) {
            std::size_t const bit = node.BitOf(text);
            index_.originBits_[node.bits + bit / kWordBits] |= Word{1} << bit % kWordBits;
            return;
        }
        ForEachSlot(*middle, [&](std::size_t slot) {
            SetOriginBits(node, middle + 1, characters - 1,
                          text << 4 | static_cast<std::uint32_t>(slot));
        });
    }

    /// Leaves node as it is when there would be no branches.
    void MakeSplit(Child& node, Ranks const& rules, Scope const& scope, std::size_t trait) {
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
            return;
        Scope below = scope;
        below.open.reset(trait);
        below.copies -= copies;
        std::size_t const places = rules.size() + copies;
        Split split;
        split.trait = kTraitTable[trait];
        split.rest = Make(rest, below.Part(rest.size(), places));
        for (std::size_t slot = 0; slot < kSlots; ++slot)
            split.branches[slot] = Make(branches[slot], below.Part(branches[slot].size(), places));
        Add(node, Kind::Split, index_.splits_, split);
    }

    /// A rule that accepts several slots is put into the branch of each, if it accepts no more of
    /// them than this returns: as many as keep the number of copies within what is allowed. Sets
    /// copies to that number.
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

    void MakeLeaf(Child& node, Ranks const& rules, TraitSet const& open,
                  TraitChoice const& choice) {
        Leaf leaf;
        leaf.ranks = static_cast<std::uint32_t>(index_.ranks_.size());
        leaf.size = static_cast<std::uint32_t>(rules.size());
        leaf.filters = static_cast<std::uint32_t>(index_.filters_.size());
        index_.ranks_.insert(index_.ranks_.end(), rules.begin(), rules.end());
        std::vector<std::size_t> filters =
            choice.Filters(open, rules.size() <= kSmallLeaf ? kFewFilters : kMostFilters);
        if (filters.empty())
            filters.push_back(0); // Any will do: it clears the bits that no rule has.
        std::transform(filters.begin(), filters.end(), leaf.traits.begin(),
                       [](std::size_t trait) { return kTraitTable[trait]; });
        leaf.filterCount = static_cast<std::uint32_t>(filters.size());
        AddFilters(rules, filters, SetsOfFilter(leaf));
        steps_ += kStepsOfFilter * filters.size() * rules.size();
        Add(node, Kind::Leaf, index_.leaves_, leaf);
    }

    /// Adds the sets of filters, a word of rules at a time, so that the traits of these are read
    /// from memory once.
    void AddFilters(Ranks const& rules, std::vector<std::size_t> const& filters, std::size_t sets) {
        std::size_t const begin = index_.filters_.size();
        index_.filters_.resize(begin + filters.size() * kSlots * sets);
        for (std::size_t word = 0; word * kWordBits < rules.size(); ++word)
            for (std::size_t i = 0; i < filters.size(); ++i)
                AddWord(rules, filters[i], word, &index_.filters_[begin + i * kSlots * sets], sets);
    }

    /// Puts a word of rules into the sets of a filter.
    void AddWord(Ranks const& rules, std::size_t trait, std::size_t word, RuleSet* filter,
                 std::size_t sets) const {
        std::array<Word, kSlots> accept{}; // For each slot.
        Word acceptAny = 0;
        std::size_t const end = std::min(rules.size(), (word + 1) * kWordBits);
        for (std::size_t i = word * kWordBits; i < end; ++i) {
            SlotSet const slots = traits_[rules[i]][trait];
            Word const bit = Word{1} << i % kWordBits;
            if (slots == kAnySlot)
                acceptAny |= bit;
            else
                ForEachSlot(slots, [&](std::size_t slot) { accept[slot] |= bit; });
        }
        for (std::size_t slot = 0; slot < kSlots; ++slot)
            PutSet(filter + slot * sets, sets == 1, word, accept[slot] | acceptAny);
    }

    static void PutSet(RuleSet* set, bool isSmall, std::size_t word, Word rules) {
        if (isSmall)
            *set = static_cast<RuleSet>(rules);
        else
            std::memcpy(set + word * kSetsOfWord, &rules, sizeof rules);
    }

    template <typename Node>
    static void Add(Child& node, Kind kind, std::vector<Node>& nodes, Node const& made) {
        node.kind = kind;
        node.place = static_cast<std::uint32_t>(nodes.size());
        nodes.push_back(made);
    }

    RuleIndex& index_;
    std::vector<RuleTraits> traits_; // Of each rule.
    std::size_t steps_ = 0;
    std::size_t mostSteps_ = kFreeSteps; // Of those that branches may be made in.
};

void RuleIndex::Build(std::list<CallRecordingRuleParams*> const& rules) noexcept {
    Clear();
    isRecordLent_.store(false, std::memory_order_relaxed); // The records that were lent are gone.
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
