// Sides whose automata are a row of states: most of those that people write.

#ifndef ANALYSIS_PLAINSIDE_H
#define ANALYSIS_PLAINSIDE_H

#include <optional>
#include <vector>

#include "analysis/Address.h"
#include "model/RuleSides.h"

namespace CallRecordingUtils {

/// One character after the other, and then nothing or, behind a "*" at the end, whatever follows.
struct PlainSide {
    std::vector<SymbolSet> steps; // Marks of a SIP address among them.
    SymbolSet loop;               // What may follow in any number; nothing of it when isOpen.
    SymbolSet ends;               // Behind these all that follows is accepted.
    bool isOpen;                  // All that follows the steps is accepted.
    bool acceptsNothing;          // No address goes like this.
};

/// Nothing: the pattern is of another form, and takes the automaton of a side.
std::optional<PlainSide> ReadPlainSide(RuleSide const& side, CallKind calls);

} // namespace CallRecordingUtils

#endif
