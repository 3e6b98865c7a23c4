// Lays automata side by side, and finds out about each state what the search wants to know.

#include "analysis/AutomatonPool.h"

#include <algorithm>
#include <limits>

namespace CallRecordingUtils {
namespace {

constexpr Cost kNever = std::numeric_limits<Cost>::max() / 4; // Sums of these do not overflow.
// A single side may take this part of the memory for all.
constexpr std::size_t kPartForSide = 4;
// A node of the map beside its text.
constexpr std::size_t kBytesOfNode = 80;

/// A symbol costs at least this wherever it is: the "*" of an empty port costs nothing.
constexpr Cost LeastCostOf(Symbol symbol) {
    return symbol == kBelowDigits ? 0 : CostOf(symbol);
}

Cost LeastCostOf(SymbolSet const& symbols) {
    Cost least = kNever;
    symbols.ForEach([&least](Symbol symbol) { least = std::min(least, LeastCostOf(symbol)); });
    return least;
}

SymbolSet Without(SymbolSet const& left, SymbolSet const& right) {
    SymbolSet rest;
    left.ForEach([&](Symbol symbol) {
        if (!right.Has(symbol))
            rest.Add(symbol);
    });
    return rest;
}

SymbolSet AllSymbols() {
    SymbolSet all;
    for (std::size_t i = 0; i < kSymbols; ++i)
        all.Add(static_cast<Symbol>(i));
    return all;
}

/// The state of an automaton whose states go to the pool from first on. State 0 is shared, so the
/// others move by one place less.
constexpr StateId Moved(std::uint32_t state, StateId first) {
    return state == SideAutomaton::kNone ? 0 : first + state - 1;
}

} // namespace

/// What is known of the symbols of one class of an automaton.
struct AutomatonPool::ClassTraits {
    std::size_t count = 0;
    SymbolSet symbols;
    Cost cost = kNever;
};

AutomatonPool::AutomatonPool(CallKind calls, std::size_t mostBytes)
    : calls_(calls), mostBytes_(mostBytes) {
    states_.push_back({{}, 0, 0, 0, kNever, false, false});
}

/// What a vector has in reserve is memory that was never touched.
std::size_t AutomatonPool::Bytes() const {
    return states_.size() * sizeof(State) + targets_.size() * sizeof(StateId) +
           sides_.size() * sizeof(Side) + bytesOfKeys_;
}

SideId AutomatonPool::Add(RuleSide const& side) {
    auto const id = static_cast<SideId>(sides_.size());
    auto const [known, isNew] = sideOf_.emplace(Key(side.type, side.pattern), id);
    if (!isNew)
        return known->second;
    bytesOfKeys_ += kBytesOfNode + known->first.second.capacity();
    RuleSide const kept{known->first.second, side.type};
    sides_.push_back({kept, SideOutline(kept, calls_), {}, false, std::nullopt});
    return id;
}

/// Reads the pattern of a side.
void AutomatonPool::Lay(SideId id, Side& side) {
    side.isRead = true;
    if (auto const plain = ReadPlainSide(side.side, calls_))
        return LayPlain(id, side, *plain);
    std::size_t const left = mostBytes_ - std::min(mostBytes_, Bytes());
    auto const [automaton, problem] =
        ReadSide(side.side, calls_, std::min(left, mostBytes_ / kPartForSide));
    side.problem = problem;
    LayAutomaton(id, side, automaton);
}

/// Adds a state that accepts, and goes on as often as the loop of plain wants.
void AutomatonPool::AddEnd(SideId side, PlainSide const& plain, StateId every) {
    auto const self = static_cast<StateId>(states_.size());
    auto const targets = static_cast<std::uint32_t>(targets_.size());
    SymbolSet special = plain.loop;
    special |= plain.ends;
    special.ForEach(
        [&](Symbol symbol) { targets_.push_back(plain.loop.Has(symbol) ? self : every); });
    states_.push_back({special, 0, targets, side, 0, true, false});
}

/// Adds a state from which the symbols of step lead to the state before it.
void AutomatonPool::AddStep(SideId side, SymbolSet const& step) {
    static SymbolSet const kAll = AllSymbols();
    auto const to = static_cast<StateId>(states_.size() - 1);
    bool const isMost = step.Count() > kSymbols / 2;
    SymbolSet const special = isMost ? Without(kAll, step) : step;
    auto const targets = static_cast<std::uint32_t>(targets_.size());
    targets_.insert(targets_.end(), special.Count(), isMost ? 0 : to);
    Cost const cost = LeastCostOf(step) + states_[to].costToEnd;
    states_.push_back({special, isMost ? to : 0, targets, side, cost, false, false});
}

/// From the last state to the first one.
void AutomatonPool::LayPlain(SideId id, Side& side, PlainSide const& plain) {
    if (plain.acceptsNothing)
        return;
    auto const every = static_cast<StateId>(states_.size());
    states_.push_back({{}, every, 0, id, 0, true, true});
    if (!plain.isOpen)
        AddEnd(id, plain, every);
    for (auto step = plain.steps.rbegin(); step != plain.steps.rend(); ++step)
        AddStep(id, *step);
    for (AddressKind const kind : {kNumber, kSip, kNumber2})
        if (LooksAt(static_cast<CallType>(side.side.type), kind, calls_))
            side.start[kind] = static_cast<StateId>(states_.size() - 1);
}

void AutomatonPool::LayAutomaton(SideId id, Side& side, SideAutomaton const& automaton) {
    Dfa const& dfa = automaton.dfa;
    auto const first = static_cast<StateId>(states_.size());
    std::vector<ClassTraits> traits(dfa.classes.Count());
    for (std::size_t i = 0; i < kSymbols; ++i) {
        auto const symbol = static_cast<Symbol>(i);
        ClassTraits& of = traits[dfa.classes.Of(symbol)];
        ++of.count;
        of.symbols.Add(symbol);
        of.cost = std::min(of.cost, LeastCostOf(symbol));
    }
    for (std::uint32_t state = 1; state < dfa.Count(); ++state)
        AddState(id, dfa, traits, state, first);
    FindCosts(dfa, traits, first);
    for (std::size_t kind = 0; kind < kAddressKinds; ++kind)
        side.start[kind] = Moved(automaton.start[kind], first);
}

void AutomatonPool::AddState(SideId side, Dfa const& dfa, std::vector<ClassTraits> const& traits,
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
    states_.push_back({special, Moved(usual, first), targets, side, isAccepting ? 0 : kNever,
                       isAccepting, state == SideAutomaton::kEvery});
}

/// Shortest ways to an accepting state. Most lead to higher states, so that few rounds from the
/// last to the first do.
void AutomatonPool::FindCosts(Dfa const& dfa, std::vector<ClassTraits> const& traits,
                              StateId first) {
    for (bool isChanged = true; isChanged;) {
        isChanged = false;
        for (std::size_t state = dfa.Count(); --state > 0;)
            for (std::size_t i = 0; i < traits.size(); ++i) {
                StateId const to = Moved(dfa.next[state * traits.size() + i], first);
                Cost const cost = traits[i].cost + states_[to].costToEnd;
                if (cost < states_[first + state - 1].costToEnd) {
                    states_[first + state - 1].costToEnd = cost;
                    isChanged = true;
                }
            }
    }
}

bool AutomatonPool::Accepts(SideId side, Address const& address) {
    StateId state = Start(side, address.kind);
    for (Symbol const symbol : address.text)
        state = Next(state, symbol);
    return IsAccepting(state);
}

bool AutomatonPool::AcceptsNothing(SideId side) {
    auto const& start = Read(side).start;
    return std::all_of(start.begin(), start.end(), [](StateId state) { return state == 0; });
}

/// Of parties there is no address of the last kind.
bool AutomatonPool::AcceptsEverything(SideId side) {
    auto const& start = Read(side).start;
    auto const end = calls_ == CallKind::Typed ? start.end() : start.begin() + kNumber2;
    return std::all_of(start.begin(), end, [this](StateId state) { return IsEvery(state); });
}

} // namespace CallRecordingUtils
