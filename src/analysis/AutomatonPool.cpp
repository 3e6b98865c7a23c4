// Lays automata side by side, and finds out about each state what the search wants to know.

#include "analysis/AutomatonPool.h"

#include <algorithm>
#include <limits>

namespace CallRecordingUtils {
namespace {

constexpr Cost kNever = std::numeric_limits<Cost>::max() / 4; // Sums of these do not overflow.
constexpr std::size_t kMostForBack = 100; // States, each of which is looked at for each lane.

/// A symbol costs at least this wherever it is: the "*" of an empty port costs nothing.
constexpr Cost LeastCostOf(Symbol symbol) {
    return symbol == kBelowDigits ? 0 : CostOf(symbol);
}

/// The state of an automaton whose states go to the pool from first on. State 0 is shared, so the
/// others move by one place less.
constexpr StateId Moved(std::uint32_t state, StateId first) {
    return state == SideAutomaton::kNone ? 0 : first + state - 1;
}

} // namespace

/// What is known of the symbols of one class of an automaton.
struct AutomatonPool::ClassTraits {
    std::uint16_t bits = 0;
    std::size_t count = 0;
    SymbolSet symbols;
    Cost cost = kNever;
};

std::vector<AutomatonPool::ClassTraits> AutomatonPool::TraitsOf(SymbolClasses const& classes) {
    std::vector<ClassTraits> traits(classes.Count());
    for (std::size_t i = 0; i < kSymbols; ++i) {
        auto const symbol = static_cast<Symbol>(i);
        ClassTraits& of = traits[classes.Of(symbol)];
        of.bits = static_cast<std::uint16_t>(of.bits | Outline::BitOf(symbol));
        ++of.count;
        of.symbols.Add(symbol);
        of.cost = std::min(of.cost, LeastCostOf(symbol));
    }
    return traits;
}

AutomatonPool::AutomatonPool(CallKind calls) : calls_(calls) {
    states_.push_back({{}, 0, 0, 0, kNever, false, false});
}

SideId AutomatonPool::Add(SideAutomaton const& side) {
    auto const id = static_cast<SideId>(sides_.size());
    auto const first = static_cast<StateId>(states_.size());
    std::vector<ClassTraits> const traits = TraitsOf(side.dfa.classes);
    FindEdges(side.dfa, traits, first);
    for (std::uint32_t state = 1; state < side.dfa.Count(); ++state)
        AddState(side.dfa, traits, state, first);
    FindCosts(first);
    Side added{};
    for (std::size_t kind = 0; kind < kAddressKinds; ++kind)
        added.start[kind] = Moved(side.start[kind], first);
    added.outlines = {FrontOf(added, first), BackOf(added, first)};
    sides_.push_back(added);
    return id;
}

void AutomatonPool::FindEdges(Dfa const& dfa, std::vector<ClassTraits> const& traits,
                              StateId first) {
    edges_.clear();
    for (std::size_t state = 1; state < dfa.Count(); ++state) {
        Edges& edges = edges_.emplace_back();
        for (std::size_t i = 0; i < traits.size(); ++i) {
            StateId const to = Moved(dfa.next[state * traits.size() + i], first);
            auto edge = std::find_if(edges.begin(), edges.end(),
                                     [to](Edge const& known) { return known.to == to; });
            if (edge == edges.end())
                edge = edges.insert(edge, {to, 0, kNever});
            edge->bits = static_cast<std::uint16_t>(edge->bits | traits[i].bits);
            edge->cost = std::min(edge->cost, traits[i].cost);
        }
    }
}

void AutomatonPool::AddState(Dfa const& dfa, std::vector<ClassTraits> const& traits,
                             std::uint32_t state, StateId first) {
    std::uint32_t const* const row = &dfa.next[state * traits.size()];
    std::size_t most = 0;
    std::uint32_t usual = 0;
    for (std::size_t i = 0; i < traits.size(); ++i) {
        std::size_t count = 0;
        for (std::size_t j = 0; j < traits.size(); ++j)
            count += row[j] == row[i] ? traits[j].count : 0;
        if (count > most) {
            most = count;
            usual = row[i];
        }
        if (most * 2 > kSymbols) // None leads to another state more often.
            break;
    }
    SymbolSet special;
    for (std::size_t i = 0; i < traits.size(); ++i)
        if (row[i] != usual)
            special |= traits[i].symbols;
    auto const targets = static_cast<std::uint32_t>(targets_.size());
    special.ForEach(
        [&](Symbol symbol) { targets_.push_back(Moved(row[dfa.classes.Of(symbol)], first)); });
    bool const isAccepting = dfa.isAccepting[state];
    states_.push_back({special, Moved(usual, first), targets, static_cast<SideId>(sides_.size()),
                       isAccepting ? 0 : kNever, isAccepting, state == SideAutomaton::kEvery});
}

/// Shortest ways to an accepting state. Most lead to higher states, so that few rounds from the
/// last to the first do.
void AutomatonPool::FindCosts(StateId first) {
    for (bool isChanged = true; isChanged;) {
        isChanged = false;
        for (std::size_t i = edges_.size(); i-- > 0;)
            for (Edge const& edge : edges_[i]) {
                Cost const cost = edge.cost + states_[edge.to].costToEnd;
                if (cost < states_[first + i].costToEnd) {
                    states_[first + i].costToEnd = cost;
                    isChanged = true;
                }
            }
    }
}

Outline AutomatonPool::FrontOf(Side const& side, StateId first) const {
    Outline outline;
    std::vector<StateId> states;
    unsigned kinds = 0;
    for (std::size_t kind = 0; kind < kAddressKinds; ++kind)
        if (side.start[kind] != 0) {
            kinds |= 1U << kind;
            states.push_back(side.start[kind]);
        }
    outline.Set(0, static_cast<std::uint16_t>(kinds));
    unsigned ended = 0;
    // States that many ways lead to say nothing, and cost time.
    for (std::size_t lane = 1; lane < Outline::kLanes && states.size() <= 32; ++lane) {
        unsigned bits = ended;
        std::vector<StateId> next;
        for (StateId const state : states) {
            bits |= states_[state].isAccepting ? Outline::kEndBit : 0;
            for (Edge const& edge : edges_[state - first])
                if (edge.to != 0) {
                    bits |= edge.bits;
                    next.push_back(edge.to);
                }
        }
        outline.Set(lane, static_cast<std::uint16_t>(bits));
        ended = bits & Outline::kEndBit;
        std::sort(next.begin(), next.end());
        next.erase(std::unique(next.begin(), next.end()), next.end());
        states = std::move(next);
    }
    return outline;
}

/// Only of sides of one kind: of others the ends are as different as the kinds.
Outline AutomatonPool::BackOf(Side const& side, StateId first) const {
    Outline outline;
    std::size_t const size = edges_.size();
    StateId const start = *std::max_element(side.start.begin(), side.start.end());
    // The state that accepts everything comes first; where it is the start, all is possible.
    if (std::count(side.start.begin(), side.start.end(), StateId{0}) != kAddressKinds - 1 ||
        start == first || size > kMostForBack)
        return outline;
    std::vector<bool> reached(size);
    bool isEveryReached = false; // From another state.
    for (std::size_t i = 0; i < size; ++i) {
        reached[i] = states_[first + i].isAccepting;
        for (Edge const& edge : edges_[i])
            isEveryReached = isEveryReached || (i != 0 && edge.to == first);
    }
    reached[0] = isEveryReached;
    unsigned ended = 0;
    for (std::size_t lane = 1; lane < Outline::kLanes; ++lane) {
        unsigned bits = ended | (reached[start - first] ? Outline::kEndBit : 0U);
        std::vector<bool> before(size, false);
        for (std::size_t i = 0; i < size; ++i)
            for (Edge const& edge : edges_[i])
                if (edge.to != 0 && reached[edge.to - first]) {
                    bits |= edge.bits;
                    before[i] = true;
                }
        outline.Set(lane, static_cast<std::uint16_t>(bits));
        ended = bits & Outline::kEndBit;
        reached = before;
    }
    return outline;
}

bool AutomatonPool::Accepts(SideId side, Address const& address) const {
    StateId state = Start(side, address.kind);
    for (Symbol const symbol : address.text)
        state = Next(state, symbol);
    return IsAccepting(state);
}

bool AutomatonPool::AcceptsNothing(SideId side) const {
    auto const& start = sides_[side].start;
    return std::all_of(start.begin(), start.end(), [](StateId state) { return state == 0; });
}

/// Of parties there is no address of the last kind.
bool AutomatonPool::AcceptsEverything(SideId side) const {
    auto const& start = sides_[side].start;
    auto const end = calls_ == CallKind::Typed ? start.end() : start.begin() + kNumber2;
    return std::all_of(start.begin(), end, [this](StateId state) { return IsEvery(state); });
}

} // namespace CallRecordingUtils
