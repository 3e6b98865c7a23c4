// Lays automata side by side, and finds out about each state what the search wants to know.

#include "analysis/AutomatonPool.h"

#include <algorithm>
#include <limits>

namespace CallRecordingUtils {
namespace {

constexpr Cost kNever = std::numeric_limits<Cost>::max() / 4; // Sums of these do not overflow.

/// A symbol costs at least this wherever it stands: where "@", ":" and the "*" of an empty port
/// belong to a SIP address, they cost nothing.
constexpr Cost LeastCostOf(Symbol symbol) {
    return symbol == kAt || symbol == kColon || symbol == kBelowDigits ? 0 : CostOf(symbol);
}

/// The bit of a lane that symbol belongs to. The digits have one each.
constexpr unsigned LaneBitOf(Symbol symbol) {
    char const c = ByteOf(symbol);
    return symbol < 10                         ? symbol
           : c >= 'a' && c <= 'm'              ? 10
           : IsLetter(c)                       ? 11
           : symbol == kAt || symbol == kColon ? 12
           : symbol < kFirstOdd                ? 13
                                               : 14;
}
constexpr std::size_t kMostForBack = 100;  // States, each of which is looked at for each lane.
constexpr std::uint16_t kEndBit = 1 << 15; // The address has ended before.

} // namespace

AutomatonPool::AutomatonPool() {
    next_.emplace_back().fill(0);
    states_.push_back({0, {}, kNever, false, false});
}

SideId AutomatonPool::Add(SideAutomaton const& side) {
    auto const id = static_cast<SideId>(sides_.size());
    std::size_t const first = states_.size();
    // State 0 is shared, so the others move by one place less.
    auto const moved = [first](std::uint32_t state) {
        return state == SideAutomaton::kNone ? 0 : static_cast<StateId>(first + state - 1);
    };
    for (std::size_t number = 1; number < side.states.size(); ++number) {
        SideAutomaton::State const& state = side.states[number];
        Row row;
        std::transform(state.next.begin(), state.next.end(), row.begin(), moved);
        next_.push_back(row);
        states_.push_back(
            {id, SpecialIn(row), 0, state.isAccepting, number == SideAutomaton::kEvery});
    }
    FindCosts(first);
    Side added{};
    std::transform(side.start.begin(), side.start.end(), added.start.begin(), moved);
    added.outlines = {FrontOf(added), BackOf(added, first)};
    sides_.push_back(added);
    return id;
}

SymbolSet AutomatonPool::SpecialIn(Row const& next) {
    Row sorted = next;
    std::sort(sorted.begin(), sorted.end());
    StateId usual = 0;
    std::size_t most = 0;
    for (auto run = sorted.begin(); run != sorted.end();) {
        auto const end = std::upper_bound(run, sorted.end(), *run);
        auto const length = static_cast<std::size_t>(end - run);
        if (length > most) {
            most = length;
            usual = *run;
        }
        run = end;
    }
    SymbolSet special;
    for (std::size_t symbol = 0; symbol < kSymbols; ++symbol)
        if (next[symbol] != usual)
            special.Add(static_cast<Symbol>(symbol));
    return special;
}

/// Shortest ways to an accepting state. Most lead to higher states, so that few rounds from the
/// last to the first do.
void AutomatonPool::FindCosts(std::size_t firstState) {
    for (std::size_t state = firstState; state < states_.size(); ++state)
        states_[state].costToEnd = states_[state].isAccepting ? 0 : kNever;
    for (bool isChanged = true; isChanged;) {
        isChanged = false;
        for (std::size_t state = states_.size(); state-- > firstState;)
            for (std::size_t symbol = 0; symbol < kSymbols; ++symbol) {
                Cost const cost = LeastCostOf(static_cast<Symbol>(symbol)) +
                                  states_[next_[state][symbol]].costToEnd;
                if (cost < states_[state].costToEnd) {
                    states_[state].costToEnd = cost;
                    isChanged = true;
                }
            }
    }
}

std::uint16_t AutomatonPool::LaneBits(StateId state) const {
    unsigned bits = states_[state].isAccepting ? kEndBit : 0;
    for (std::size_t symbol = 0; symbol < kSymbols; ++symbol)
        if (next_[state][symbol] != 0)
            bits |= 1U << LaneBitOf(static_cast<Symbol>(symbol));
    return static_cast<std::uint16_t>(bits);
}

Outline AutomatonPool::FrontOf(Side const& side) const {
    auto const& start = side.start;
    Outline outline;
    std::vector<StateId> states;
    unsigned kinds = 0;
    for (std::size_t kind = 0; kind < start.size(); ++kind)
        if (start[kind] != 0) {
            kinds |= 1U << kind;
            states.push_back(start[kind]);
        }
    outline.Set(0, static_cast<std::uint16_t>(kinds));
    unsigned ended = 0;
    // States that many ways lead to tell nothing, and cost time.
    for (std::size_t lane = 1; lane < Outline::kLanes && states.size() <= 32; ++lane) {
        unsigned bits = ended;
        std::vector<StateId> next;
        for (StateId const state : states) {
            bits |= LaneBits(state);
            next.insert(next.end(), next_[state].begin(), next_[state].end());
        }
        outline.Set(lane, static_cast<std::uint16_t>(bits));
        ended = bits & kEndBit;
        std::sort(next.begin(), next.end());
        next.erase(std::unique(next.begin(), next.end()), next.end());
        next.erase(std::remove(next.begin(), next.end(), StateId{0}), next.end());
        states = std::move(next);
    }
    return outline;
}

/// Whether a state leads to target, the first one of its side, from another one.
bool AutomatonPool::IsReached(StateId target) const {
    return std::any_of(
        next_.begin() + target + 1, next_.end(),
        [target](Row const& next) {
            return std::find(next.begin(), next.end(), target) != next.end();
        });
}

/// Only of sides of one kind: of others the ends are as different as the kinds.
Outline AutomatonPool::BackOf(Side const& side, std::size_t firstState) const {
    Outline outline;
    std::size_t const size = states_.size() - firstState;
    StateId const start = *std::max_element(side.start.begin(), side.start.end());
    // The state that accepts everything comes first; where it is the start, all is possible.
    if (std::count(side.start.begin(), side.start.end(), StateId{0}) != kAddressKinds - 1 ||
        start == firstState || size > kMostForBack)
        return outline;
    std::vector<bool> reached(size);
    for (std::size_t i = 0; i < size; ++i)
        reached[i] = states_[firstState + i].isAccepting;
    reached[0] = IsReached(static_cast<StateId>(firstState));
    unsigned ended = 0;
    for (std::size_t lane = 1; lane < Outline::kLanes; ++lane) {
        unsigned bits = ended | (reached[start - firstState] ? kEndBit : 0);
        std::vector<bool> before(size, false);
        for (std::size_t i = 0; i < size; ++i)
            for (std::size_t symbol = 0; symbol < kSymbols; ++symbol) {
                StateId const next = next_[firstState + i][symbol];
                if (next == 0 || !reached[next - firstState])
                    continue;
                bits |= 1U << LaneBitOf(static_cast<Symbol>(symbol));
                before[i] = true;
            }
        outline.Set(lane, static_cast<std::uint16_t>(bits));
        ended = bits & kEndBit;
        reached = before;
    }
    return outline;
}

bool AutomatonPool::Accepts(SideId side, AddressKind kind, std::string_view address) const {
    StateId state = Start(side, kind);
    for (char const c : address)
        state = Next(state, SymbolOf(c));
    return IsAccepting(state);
}

bool AutomatonPool::AcceptsNothing(SideId side) const {
    auto const& start = sides_[side].start;
    return std::all_of(start.begin(), start.end(), [](StateId state) { return state == 0; });
}

} // namespace CallRecordingUtils
