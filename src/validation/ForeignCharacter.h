// Words what is wrong with a character outside ASCII, mostly typography in a text that was copied.

#ifndef VALIDATION_FOREIGNCHARACTER_H
#define VALIDATION_FOREIGNCHARACTER_H

#include <string>
#include <string_view>

namespace CallRecordingUtils {

/// Returns a sentence that names the first character of text and says what to type instead.
/// REQUIRES: the first byte of text is not ASCII.
std::string DescribeForeignCharacter(std::string_view text);

} // namespace CallRecordingUtils

#endif
