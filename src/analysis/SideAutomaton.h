// What one side of a rule accepts, as an automaton over everything that a side of a call can be.

#ifndef ANALYSIS_SIDEAUTOMATON_H
#define ANALYSIS_SIDEAUTOMATON_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "analysis/ItemAutomaton.h"
#include "analysis/Symbols.h"
#include "model/RuleSides.h"

namespace CallRecordingUtils {

/// The kinds of address that a side of a call has, the most usual first.
enum AddressKind : std::size_t { kNumber, kSip, kNumber2 };
inline constexpr std::size_t kAddressKinds = 3;

/// Reads the text of an address: the number, or user@host:port of a SIP address with "*" for an
/// empty port. User and host hold no "@", a port holds neither "@" nor ":"; what the automaton says
/// of other texts means nothing. A rule side of type any compares the user of a SIP address, and so
/// its automaton has decided once it has read the "@".
///
/// Built as textbooks do (Hopcroft, Motwani, Ullman): the places at which the matcher can stand in
/// the pattern are the states of a nondeterministic automaton, and sets of them those of this one.
/// At most 2^n sets for n places, and only those are built that some text leads to. Of a set, what
/// lies before its last "*" is left out: the "*" takes all that would be taken there.
struct SideAutomaton {
    static constexpr std::uint32_t kNone = 0;  // Accepts nothing that can follow.
    static constexpr std::uint32_t kEvery = 1; // Accepts everything that can follow.

    struct State {
        std::array<std::uint32_t, kSymbols> next;
        bool isAccepting; // The address may end here.
    };
    std::vector<State> states;
    std::array<std::uint32_t, kAddressKinds> start;
};

/// Reads side, whose pattern is in the stored form.
Reading<SideAutomaton> ReadSide(RuleSide const& side, std::size_t mostStates);

} // namespace CallRecordingUtils

#endif
