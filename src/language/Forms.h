// The two forms of a pattern, and the way from each to the other.
//
//     entry form       {1-5}    \*  \?  \,  \-  \!
//     stored form      <1-5>    #   ^   @   %   :
//
// People write the entry form. The rule file holds the stored form, and the matcher reads it.

#ifndef LANGUAGE_FORMS_H
#define LANGUAGE_FORMS_H

#include <cstddef>
#include <string>
#include <string_view>

namespace CallRecordingUtils {

/// What only the entry form holds. In the stored form the matcher stops there.
inline constexpr std::string_view kEntryFormOnly = "{}\\";

/// Returns the stored form of a well-formed pattern.
std::string ToStoredForm(std::string_view entry);

/// Returns the entry form of a pattern. REQUIRES: stored holds nothing of kEntryFormOnly.
std::string ToEntryForm(std::string_view stored);

/// Replaces every escape in pattern by the code that stores it. Other backslashes stay.
void StoreEscapes(std::string& pattern);

/// Returns the character that code, one of kEscapeCodes, stores the escape of.
char EscapedCharacter(char code);

/// Returns where the character at position of stored, or its end, stands in written.
/// REQUIRES: StoreEscapes makes stored of written, or the two are equal.
std::size_t PositionAsWritten(std::string_view written, std::string_view stored,
                              std::size_t position);

} // namespace CallRecordingUtils

#endif
