// The item list of a range expression as an automaton.

#ifndef ANALYSIS_ITEMAUTOMATON_H
#define ANALYSIS_ITEMAUTOMATON_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "analysis/SubsetConstruction.h"

namespace CallRecordingUtils {

/// Accepts the candidates that AdmitsCandidate does, and is as small as can be. A list admits
/// candidates of bounded length only, so no state is met twice on a way.
struct ItemAutomaton {
    Dfa dfa;
    std::uint32_t start = 0;
};

/// Why there is no automaton for a text.
enum class Unreadable {
    OddItems, // A group whose items have no form that the checks of a pattern pass.
    TooLarge, // It would need more memory than it may take.
};

template <typename Automaton>
struct Reading {
    Automaton automaton;
    std::optional<Unreadable> problem;
};

/// Reads list, the text between "<" and ">"; when there is a problem, the automaton is empty.
/// mostBytes bounds what is held on the way.
Reading<ItemAutomaton> ReadItemList(std::string_view list, std::size_t mostBytes);

} // namespace CallRecordingUtils

#endif
