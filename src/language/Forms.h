// The two forms of a pattern, and how to convert one to the other.
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

/// Characters that only the entry form has. The matcher stops at one in a stored pattern.
inline constexpr std::string_view kEntryFormOnly = "{}\\";

/// Returns the stored form of a well-formed pattern.
std::string ToStoredForm(std::string_view entry);

/// Returns the entry form of a pattern. REQUIRES: no character of stored is in kEntryFormOnly.
std::string ToEntryForm(std::string_view stored);

/// Replaces every escape in pattern by its code. Other backslashes stay.
void StoreEscapes(std::string& pattern);

/// Returns the character whose escape has this code, one of kEscapeCodes.
char EscapedCharacter(char code);

/// Returns the position in written of the character at position in stored; position may be the end.
/// REQUIRES: StoreEscapes turns written into stored, or the two are equal.
std::size_t PositionAsWritten(std::string_view written, std::string_view stored,
                              std::size_t position);

} // namespace CallRecordingUtils

#endif
