// The search for an address.

#include "analysis/AddressSearch.h"

#include <algorithm>

namespace CallRecordingUtils {
namespace {

// Numbers of the second kind are shown when nothing else will do.
constexpr Cost kNumber2Cost = kEmptyCost / 2;

// What the tables need for a node beside its states: the node, its entry in the set and the queue.
constexpr std::size_t kNodeBytes = 128;

} // namespace

AddressSearch::AddressSearch(AutomatonPool& pool, std::vector<SideId> const& must,
                             std::vector<SideId> const& others, Judge& judge, Allowance& allowance,
                             Prefer prefer)
    : pool_(pool), must_(must), others_(others), judge_(judge), allowance_(allowance),
      prefer_(prefer), known_(16, Hash{this}, Equal{this}) {}

AddressSearch::~AddressSearch() {
    allowance_.bytes += bytes_;
}

Outcome AddressSearch::Run() {
    Begin(kNumber, 0);
    Begin(kSip, 0);
    Begin(kNumber2, kNumber2Cost);
    while (!queue_.empty() && !isSpent_) {
        Entry const entry = queue_.top();
        queue_.pop();
        if (entry.isEnd) {
            Outcome const outcome = TryEnd(entry.node);
            if (outcome != Outcome::None)
                return outcome;
            continue;
        }
        if (nodes_[entry.node].isClosed || IsHopeless(entry.node))
            continue;
        nodes_[entry.node].isClosed = true;
        AddEnd(entry.node);
        Expand(entry.node);
    }
    return isSpent_ ? Outcome::Undecided : Outcome::None;
}

void AddressSearch::Begin(AddressKind kind, Cost cost) {
    std::size_t const first = states_.size();
    bool isAlive = true;
    for (SideId const side : must_)
        isAlive = isAlive && AddState(pool_.Start(side, kind), true);
    for (SideId const side : others_)
        isAlive = isAlive && AddState(pool_.Start(side, kind), false);
    auto const self = static_cast<NodeId>(nodes_.size());
    if (isAlive && Spend(states_.size() - first))
        Add({first, static_cast<std::uint32_t>(states_.size() - first), self, cost, 0,
             FirstZone(kind), kind, false});
    else
        states_.resize(first);
}

/// Returns false when nothing of use can come any more.
bool AddressSearch::AddState(StateId state, bool isMust) {
    if (state != 0)
        states_.push_back(state);
    return state != 0 || !isMust;
}

/// What reading symbol in zone costs.
Cost AddressSearch::CostIn(Zone zone, Symbol symbol) const {
    if (symbol >= kTextSymbols)
        return zone == Zone::UserBegin || zone == Zone::HostBegin ? kEmptyCost : 0;
    // No character of a party's user compares as this one except odd ones.
    bool const isOdd =
        symbol == kBelowDigits && (zone >= Zone::PortBegin || pool_.Calls() == CallKind::Parties);
    bool const isUnwanted = symbol < kFirstLetter && prefer_ == Prefer::OtherSymbols;
    return isOdd ? kOddCost : isUnwanted ? kEmptyCost : CostOf(symbol);
}

/// Of the symbols that all automata treat alike, the cheapest one stands for all.
void AddressSearch::Expand(NodeId node) {
    Zone const zone = nodes_[node].zone;
    SymbolSet special;
    for (std::size_t i = 0; i < nodes_[node].size; ++i)
        special |= pool_.SpecialOf(states_[nodes_[node].states + i]);
    special.Add(kHostMark); // Impossible in most zones; where one is not, it leads to another.
    special.Add(kPortMark);
    auto const behind = [&](Symbol symbol) { return ZoneBehind(pool_.Calls(), zone, symbol); };
    auto const isSpecial = [&](Symbol symbol) { return special.Has(symbol) || !behind(symbol); };
    Symbol rest = prefer_ == Prefer::Digits ? 0 : kFirstLetter;
    while (rest < kTextSymbols && isSpecial(rest))
        ++rest;
    for (Symbol digit = 0; rest == kTextSymbols && digit < kFirstLetter; ++digit)
        rest = isSpecial(digit) ? rest : digit;
    if (rest < kTextSymbols)
        special.Add(rest);
    special.ForEach([&](Symbol symbol) {
        auto const next = behind(symbol);
        if (next && !isSpent_)
            Follow(node, symbol, *next, CostIn(zone, symbol));
    });
    if (zone == Zone::PortBegin && pool_.Calls() == CallKind::Typed)
        Follow(node, kBelowDigits, Zone::NoPort, 0);
}

void AddressSearch::Follow(NodeId from, Symbol symbol, Zone zone, Cost cost) {
    Node const before = nodes_[from];
    if (!Spend(before.size))
        return;
    std::size_t const first = states_.size();
    bool isAlive = true;
    for (std::size_t i = 0; i < before.size && isAlive; ++i)
        isAlive = AddState(pool_.Next(states_[before.states + i], symbol), i < must_.size());
    if (isAlive)
        Add({first, static_cast<std::uint32_t>(states_.size() - first), from, before.cost + cost,
             symbol, zone, before.kind, false});
    else
        states_.resize(first);
}

/// Adds node, whose states are the last ones, unless it is known already, or useless.
void AddressSearch::Add(Node const& node) {
    auto const id = static_cast<NodeId>(nodes_.size());
    nodes_.push_back(node);
    auto const [known, isNew] = known_.insert(id);
    NodeId queued = id;
    if (!isNew) {
        queued = *known;
        nodes_.pop_back();
        states_.resize(node.states);
        Node& old = nodes_[queued];
        if (old.isClosed || old.cost <= node.cost)
            return;
        old.cost = node.cost;
        old.parent = node.parent;
        old.symbol = node.symbol;
    } else if (IsHopeless(id)) {
        nodes_[id].isClosed = true;
        return;
    }
    queue_.push({node.cost + CostToEnd(nodes_[queued]), node.cost, queued, false});
}

void AddressSearch::AddEnd(NodeId node) {
    Node const& end = nodes_[node];
    auto const isAccepting = [this](StateId state) { return pool_.IsAccepting(state); };
    auto const states = states_.begin() + static_cast<std::ptrdiff_t>(end.states);
    if (!MayEndIn(end.zone) ||
        !std::all_of(states, states + static_cast<std::ptrdiff_t>(must_.size()), isAccepting))
        return;
    Cost const cost = end.cost + (end.zone == Zone::NumberBegin ? kEmptyCost : 0);
    queue_.push({cost, cost, node, true});
}

bool AddressSearch::IsHopeless(NodeId node) {
    Node const& at = nodes_[node];
    sides_.clear();
    for (std::size_t i = must_.size(); i < at.size; ++i)
        if (pool_.IsEvery(states_[at.states + i]))
            sides_.push_back(pool_.SideOf(states_[at.states + i]));
    return !sides_.empty() && judge_.IsHopeless(sides_);
}

Outcome AddressSearch::TryEnd(NodeId node) {
    Node const& at = nodes_[node];
    sides_.clear();
    for (std::size_t i = must_.size(); i < at.size; ++i)
        if (pool_.IsAccepting(states_[at.states + i]))
            sides_.push_back(pool_.SideOf(states_[at.states + i]));
    return judge_.Try(sides_, AddressOf(node));
}

Address AddressSearch::AddressOf(NodeId node) const {
    Address address{nodes_[node].kind, {}};
    for (; nodes_[node].parent != node; node = nodes_[node].parent)
        address.text += nodes_[node].symbol;
    std::reverse(address.text.begin(), address.text.end());
    return address;
}

Cost AddressSearch::CostToEnd(Node const& node) const {
    Cost cost = 0;
    for (std::size_t i = 0; i < must_.size(); ++i)
        cost = std::max(cost, pool_.CostToEnd(states_[node.states + i]));
    return cost;
}

std::size_t AddressSearch::HashOf(NodeId node) const {
    Node const& at = nodes_[node];
    std::uint64_t hash = static_cast<std::uint64_t>(at.zone) * 3 + at.kind;
    for (std::size_t i = 0; i < at.size; ++i)
        hash = (hash ^ states_[at.states + i]) * 0x9E3779B97F4A7C15;
    return static_cast<std::size_t>(hash ^ hash >> 32);
}

bool AddressSearch::AreSame(NodeId a, NodeId b) const {
    Node const& one = nodes_[a];
    Node const& other = nodes_[b];
    auto const states = states_.begin();
    auto const at = [states](std::size_t index) {
        return states + static_cast<std::ptrdiff_t>(index);
    };
    return one.zone == other.zone && one.kind == other.kind &&
           std::equal(at(one.states), at(one.states + one.size), at(other.states),
                      at(other.states + other.size));
}

/// Counts the steps of one node, and the memory that it may come to hold.
bool AddressSearch::Spend(std::size_t steps) {
    std::size_t const held = nodes_.size() * kNodeBytes + states_.size() * sizeof(StateId);
    steps += 8; // What it costs whatever the number of states.
    std::size_t const more = held > bytes_ ? held - bytes_ : 0;
    if (allowance_.steps < steps || allowance_.bytes < more) {
        isSpent_ = true;
        return false;
    }
    allowance_.steps -= steps;
    allowance_.bytes -= more;
    bytes_ += more;
    return true;
}

} // namespace CallRecordingUtils
