// Finds what means something elsewhere, and is no more than its characters here. Each function
// returns the first such part of a piece.

#ifndef VALIDATION_FOREIGNNOTATION_H
#define VALIDATION_FOREIGNNOTATION_H

#include <optional>

#include "validation/Suspicions.h"

namespace CallRecordingUtils {

/// A "+" after a group, which repeats the group in a regular expression.
std::optional<Stretch> FindPlusAfterGroup(PatternPiece const& piece);

/// A number such as _2XX. or 2XX, in which a dial plan has X, Z and N stand for digits.
std::optional<Stretch> FindDialPlan(PatternPiece const& piece);

/// A number such as 1.50E+10, which is how a spreadsheet shortens one.
std::optional<Stretch> FindShortenedNumber(PatternPiece const& piece);

} // namespace CallRecordingUtils

#endif
