// Finds items of groups that do not do what they seem to. Each function returns the first such part
// of a piece.

#ifndef VALIDATION_SUSPICIOUSITEMS_H
#define VALIDATION_SUSPICIOUSITEMS_H

#include <optional>

#include "validation/Suspicions.h"

namespace CallRecordingUtils {

/// A "[" or "]" in a value.
std::optional<Stretch> FindBracketInItem(PatternPiece const& piece);

/// A value such as 200..299.
std::optional<Stretch> FindDots(PatternPiece const& piece);

/// A range of letters with more than one letter at an end.
std::optional<Stretch> FindLongLetterRange(PatternPiece const& piece);

/// A range of numbers such as 1-05, whose low end does not ask for leading zeros.
std::optional<Stretch> FindUselessZero(PatternPiece const& piece);

/// A range of numbers that takes greater numbers than its high end, which 32 bits cannot hold.
std::optional<Stretch> FindLargeNumber(PatternPiece const& piece);

/// An exclusion of a value that the other items do not take anyway.
std::optional<Stretch> FindIdleExclusion(PatternPiece const& piece);

/// An item that takes nothing but what its group excludes.
std::optional<Stretch> FindExcludedItem(PatternPiece const& piece);

} // namespace CallRecordingUtils

#endif
