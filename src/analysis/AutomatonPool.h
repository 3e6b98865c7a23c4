// The automata of many rule sides, laid side by side for running them together.

#ifndef ANALYSIS_AUTOMATONPOOL_H
#define ANALYSIS_AUTOMATONPOOL_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "analysis/SideAutomaton.h"

namespace CallRecordingUtils {

/// A state of one of the automata; state 0 is the one of all from which nothing is accepted.
using StateId = std::uint32_t;
using SideId = std::uint32_t;

/// What the first, or the last, characters of the addresses that a side accepts can be. Two sides
/// whose outlines do not meet accept no address in common; most pairs of a long list fall with
/// that.
class Outline {
  public:
    Outline() { lanes_.fill(~std::uint64_t{0}); }

    bool Meets(Outline const& other) const {
        for (std::size_t word = 0; word < lanes_.size(); ++word)
            if (HasEmptyLane(lanes_[word] & other.lanes_[word]))
                return false;
        return true;
    }
    Outline& operator&=(Outline const& other) {
        for (std::size_t word = 0; word < lanes_.size(); ++word)
            lanes_[word] &= other.lanes_[word];
        return *this;
    }

    /// Sets lane to bits. Lane 0 is the kind of the address, the others are the characters. What
    /// is not set says that all is possible.
    static constexpr std::size_t kLanes = 16;
    void Set(std::size_t lane, std::uint16_t bits) {
        std::size_t const shift = lane % 4 * 16;
        lanes_[lane / 4] &= ~(std::uint64_t{0xFFFF} << shift);
        lanes_[lane / 4] |= std::uint64_t{bits} << shift;
    }

  private:
    /// Four lanes a word. Subtracting 1 from each borrows into the top bit of those that are 0.
    static bool HasEmptyLane(std::uint64_t word) {
        constexpr std::uint64_t kOnes = 0x0001000100010001;
        return ((word - kOnes) & ~word & (kOnes << 15)) != 0;
    }

    std::array<std::uint64_t, kLanes / 4> lanes_;
};

struct Outlines {
    Outline front;
    Outline back;

    bool Meet(Outlines const& other) const {
        return front.Meets(other.front) && back.Meets(other.back);
    }
    Outlines& operator&=(Outlines const& other) {
        front &= other.front;
        back &= other.back;
        return *this;
    }
    bool AreEmpty() const { return !Meet(*this); }
};

class AutomatonPool {
  public:
    AutomatonPool();

    SideId Add(SideAutomaton const& side);

    StateId Start(SideId side, AddressKind kind) const { return sides_[side].start[kind]; }
    Outlines const& OutlinesOf(SideId side) const { return sides_[side].outlines; }
    StateId Next(StateId state, Symbol symbol) const { return next_[state][symbol]; }
    SideId SideOf(StateId state) const { return states_[state].side; }
    bool IsAccepting(StateId state) const { return states_[state].isAccepting; }
    /// Whether all that can follow is accepted.
    bool IsEvery(StateId state) const { return states_[state].isEvery; }
    /// The symbols that do not lead where most lead.
    SymbolSet const& SpecialOf(StateId state) const { return states_[state].special; }
    /// The least that the rest of an accepted address can cost.
    Cost CostToEnd(StateId state) const { return states_[state].costToEnd; }

    /// Whether side accepts address, the text of one of kind as SideAutomaton reads it.
    bool Accepts(SideId side, AddressKind kind, std::string_view address) const;
    bool AcceptsNothing(SideId side) const;

    std::size_t Bytes() const { return states_.size() * (sizeof(State) + sizeof(Row)); }

  private:
    using Row = std::array<StateId, kSymbols>;
    struct State {
        SideId side;
        SymbolSet special;
        Cost costToEnd;
        bool isAccepting;
        bool isEvery;
    };
    struct Side {
        std::array<StateId, kAddressKinds> start;
        Outlines outlines;
    };

    static SymbolSet SpecialIn(Row const& next);
    void FindCosts(std::size_t firstState);
    Outline FrontOf(Side const& side) const;
    bool IsReached(StateId target) const;
    Outline BackOf(Side const& side, std::size_t firstState) const;
    std::uint16_t LaneBits(StateId state) const;

    std::vector<Row> next_; // By state, as states_. Apart, since it is the larger part by far.
    std::vector<State> states_;
    std::vector<Side> sides_;
};

} // namespace CallRecordingUtils

#endif
