// Which encoding a text is in.

#ifndef TEXT_ENCODING_H
#define TEXT_ENCODING_H

#include <string>
#include <string_view>

namespace CallRecordingUtils {

bool IsUtf8(std::string_view text);

/// Whether text has bytes that are not UTF-8, and no character of several bytes that is.
bool LooksLikeLatin1(std::string_view text);

/// Returns text, read as Latin-1, as UTF-8.
std::string FromLatin1(std::string_view text);

} // namespace CallRecordingUtils

#endif
