// What one side of a rule accepts, as an automaton over everything that a side of a call can be.

#ifndef ANALYSIS_SIDEAUTOMATON_H
#define ANALYSIS_SIDEAUTOMATON_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "analysis/Address.h"
#include "analysis/ItemAutomaton.h"
#include "model/RuleSides.h"

namespace CallRecordingUtils {

/// Reads an address, with its marks. A side that looks at the user only has decided once it has
/// read the mark behind it. What is said of texts that are no address means nothing.
struct SideAutomaton {
    static constexpr std::uint32_t kNone = 0;  // Accepts nothing that can follow.
    static constexpr std::uint32_t kEvery = 1; // Accepts everything that can follow.

    Dfa dfa;
    std::array<std::uint32_t, kAddressKinds> start{};
};

/// The pattern that the matcher compares: a SIP pattern without a port takes every port, and one
/// without an "@" nothing.
std::string ComparedPattern(RuleSide const& side);

/// Whether a side of this type looks at addresses of kind.
bool LooksAt(CallType type, AddressKind kind, CallKind calls);

/// Reads side, whose pattern is in the stored form; when there is a problem, the automaton accepts
/// all that the side does, and may accept more. mostBytes bounds what is held on the way.
Reading<SideAutomaton> ReadSide(RuleSide const& side, CallKind calls, std::size_t mostBytes);

} // namespace CallRecordingUtils

#endif
