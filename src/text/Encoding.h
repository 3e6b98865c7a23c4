// Texts that are not in UTF-8.

#ifndef TEXT_ENCODING_H
#define TEXT_ENCODING_H

#include <optional>
#include <string>
#include <string_view>

namespace CallRecordingUtils {

/// Returns text as UTF-8 if a mark says that it is UTF-16, else as it is; a mark of UTF-8 stays.
/// Returns nothing when it is UTF-16 that is cut off or malformed.
std::optional<std::string> FromUtf16(std::string const& text);

bool IsUtf8(std::string_view text);

/// Whether text has bytes that are not UTF-8, and no character of several bytes that is.
bool LooksLikeLatin1(std::string_view text);

/// Returns text, read as Latin-1, as UTF-8.
std::string FromLatin1(std::string_view text);

} // namespace CallRecordingUtils

#endif
