// The escapes of the entry form and the single characters that store them.

#ifndef VALIDATION_ESCAPESEQUENCES_H
#define VALIDATION_ESCAPESEQUENCES_H

#include <cstddef>
#include <string>
#include <string_view>

namespace CallRecordingUtils {

/// Replaces every escape in pattern by the character that stores it. Other backslashes stay.
void StoreEscapes(std::string& pattern);

/// Returns the character that code, one of kEscapeCodes, stores the escape of.
char EscapedCharacter(char code);

/// Returns where the character at position of stored, or its end, stands in written.
/// REQUIRES: StoreEscapes makes stored of written, or the two are equal.
std::size_t PositionAsWritten(std::string_view written, std::string_view stored,
                              std::size_t position);

} // namespace CallRecordingUtils

#endif
