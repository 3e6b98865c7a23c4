// The item list of a range expression as an automaton.

#ifndef ANALYSIS_ITEMAUTOMATON_H
#define ANALYSIS_ITEMAUTOMATON_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "analysis/Symbols.h"

namespace CallRecordingUtils {

/// Accepts the candidates that AdmitsCandidate does, and is as small as can be. A list admits
/// candidates of bounded length only, so no state is met twice on a way. State 0 is the one from
/// which nothing is accepted.
struct ItemAutomaton {
    struct State {
        std::array<std::uint32_t, kSymbols> next;
        bool isAccepting;
    };
    std::vector<State> states;
    std::uint32_t start;
};

/// Why there is no automaton for a text.
enum class Unreadable {
    OutsideTheLanguage, // Not a form that the checks of a pattern pass.
    TooLarge,           // It would need more states than it may have.
};

template <typename Automaton>
struct Reading {
    Automaton automaton;
    std::optional<Unreadable> problem; // Then the automaton is empty.
};

/// A state stands for a set of places of a pattern or list. Where there are more places in all sets
/// together than this many for each state that there may be, the automaton is too large.
inline constexpr std::size_t kPlacesForState = 16;

/// Reads list, the text between "<" and ">".
Reading<ItemAutomaton> ReadItemList(std::string_view list, std::size_t mostStates);

} // namespace CallRecordingUtils

#endif
