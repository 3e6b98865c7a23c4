// The automata of many rule sides, laid side by side for running them together.

#ifndef ANALYSIS_AUTOMATONPOOL_H
#define ANALYSIS_AUTOMATONPOOL_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "analysis/Outline.h"
#include "analysis/SideAutomaton.h"

namespace CallRecordingUtils {

/// A state of one of the automata; state 0 is the one of all from which nothing is accepted.
using StateId = std::uint32_t;
using SideId = std::uint32_t;

class AutomatonPool {
  public:
    explicit AutomatonPool(CallKind calls);

    CallKind Calls() const { return calls_; }

    SideId Add(SideAutomaton const& side);

    StateId Start(SideId side, AddressKind kind) const { return sides_[side].start[kind]; }
    Outlines const& OutlinesOf(SideId side) const { return sides_[side].outlines; }
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

    bool Accepts(SideId side, Address const& address) const;
    bool AcceptsNothing(SideId side) const;
    bool AcceptsEverything(SideId side) const;

    std::size_t Bytes() const {
        return states_.size() * sizeof(State) + targets_.size() * sizeof(StateId) +
               sides_.size() * sizeof(Side);
    }

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
        std::array<StateId, kAddressKinds> start;
        Outlines outlines;
    };
    /// All symbols that lead from a state to another one.
    struct Edge {
        StateId to;
        std::uint16_t bits; // See Outline.
        Cost cost;          // Of the cheapest.
    };
    using Edges = std::vector<Edge>;

    struct ClassTraits;
    static std::vector<ClassTraits> TraitsOf(SymbolClasses const& classes);
    void FindEdges(Dfa const& dfa, std::vector<ClassTraits> const& traits, StateId first);
    void AddState(Dfa const& dfa, std::vector<ClassTraits> const& traits, std::uint32_t state,
                  StateId first);
    void FindCosts(StateId first);
    Outline FrontOf(Side const& side, StateId first) const;
    Outline BackOf(Side const& side, StateId first) const;

    CallKind const calls_;
    std::vector<State> states_;
    std::vector<StateId> targets_;
    std::vector<Side> sides_;
    std::vector<Edges> edges_; // Of the states of the side that is being added.
};

} // namespace CallRecordingUtils

#endif
