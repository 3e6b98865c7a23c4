// The automata of many rule sides, laid side by side for running them together.

#ifndef ANALYSIS_AUTOMATONPOOL_H
#define ANALYSIS_AUTOMATONPOOL_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "analysis/PlainSide.h"
#include "analysis/SideAutomaton.h"
#include "analysis/SideOutline.h"

namespace CallRecordingUtils {

/// A state of one of the automata; state 0 is the one of all from which nothing is accepted.
using StateId = std::uint32_t;
using SideId = std::uint32_t;

/// An automaton is read when it is asked for: most questions are about few of many sides.
class AutomatonPool {
  public:
    /// mostBytes bounds what all automata hold together.
    AutomatonPool(CallKind calls, std::size_t mostBytes);
    AutomatonPool(AutomatonPool const&) = delete;
    AutomatonPool& operator=(AutomatonPool const&) = delete;

    CallKind Calls() const { return calls_; }

    /// Equal sides have one number.
    SideId Add(RuleSide const& side);

    SideOutline const& OutlineOf(SideId side) const { return sides_[side].outline; }
    /// Why a side has no automaton; what stands for it accepts all that it may.
    std::optional<Unreadable> ProblemOf(SideId side) { return Read(side).problem; }

    StateId Start(SideId side, AddressKind kind) { return Read(side).start[kind]; }
    StateId Next(StateId state, Symbol symbol) const {
        State const& from = states_[state];
        return from.special.Has(symbol) ? targets_[from.targets + from.special.CountBelow(symbol)]
                                        : from.usual;
    }
    SideId SideOf(StateId state) const { return states_[state].side; }
    bool IsAccepting(StateId state) const { return states_[state].isAccepting; }
    /// Whether all that can follow is accepted.
    bool IsEvery(StateId state) const { return states_[state].isEvery; }
    /// The symbols that do not lead where most lead.
    SymbolSet const& SpecialOf(StateId state) const { return states_[state].special; }
    /// The least that the rest of an accepted address can cost.
    Cost CostToEnd(StateId state) const { return states_[state].costToEnd; }

    bool Accepts(SideId side, Address const& address);
    bool AcceptsNothing(SideId side);
    bool AcceptsEverything(SideId side);

    /// What is held.
    std::size_t Bytes() const;

  private:
    /// Most symbols lead from a state to one other, so only the ways of the rest are kept by
    /// symbol.
    struct State {
        SymbolSet special;
        StateId usual;
        std::uint32_t targets; // Where in targets_ those of the special symbols begin.
        SideId side;
        Cost costToEnd;
        bool isAccepting;
        bool isEvery;
    };
    struct Side {
        RuleSide side; // Its pattern is that of the key in sideOf_.
        SideOutline outline;
        std::array<StateId, kAddressKinds> start;
        bool isRead;
        std::optional<Unreadable> problem;
    };
    using Key = std::pair<std::int32_t, std::string>;
    struct Hash {
        std::size_t operator()(Key const& key) const {
            return std::hash<std::string>()(key.second) + static_cast<std::size_t>(key.first);
        }
    };
    struct ClassTraits;

    Side& Read(SideId id) {
        Side& side = sides_[id];
        if (!side.isRead)
            Lay(id, side);
        return side;
    }
    void Lay(SideId id, Side& side);
    void LayPlain(SideId id, Side& side, PlainSide const& plain);
    void LayAutomaton(SideId id, Side& side, SideAutomaton const& automaton);
    void AddEnd(SideId side, PlainSide const& plain, StateId every);
    void AddStep(SideId side, SymbolSet const& step);
    void AddState(SideId side, Dfa const& dfa, std::vector<ClassTraits> const& traits,
                  std::uint32_t state, StateId first);
    void FindCosts(Dfa const& dfa, std::vector<ClassTraits> const& traits, StateId first);

    CallKind const calls_;
    std::size_t const mostBytes_;
    std::vector<State> states_;
    std::vector<StateId> targets_;
    std::vector<Side> sides_;
    std::unordered_map<Key, SideId, Hash> sideOf_;
    std::size_t bytesOfKeys_ = 0;
};

} // namespace CallRecordingUtils

#endif
