// What to say of a character outside ASCII: mostly a typographic one that came in with a copied
// text.

#ifndef VALIDATION_FOREIGNCHARACTER_H
#define VALIDATION_FOREIGNCHARACTER_H

#include <string>
#include <string_view>

namespace CallRecordingUtils {

/// Returns a sentence that names the character text begins with and says what to type instead.
/// REQUIRES: text begins with a byte that is not ASCII.
std::string DescribeForeignCharacter(std::string_view text);

} // namespace CallRecordingUtils

#endif
