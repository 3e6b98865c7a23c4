// Texts of the rule file in JSON, which holds Unicode only, while the file may hold any bytes.

#ifndef JSON_BYTES_H
#define JSON_BYTES_H

#include <string>
#include <string_view>

namespace CallRecordingUtils {

/// Returns bytes as UTF-8. Each byte that belongs to no character becomes the private character
/// U+EF00 plus the byte (U+EF80 to U+EFFF); so does each byte of such a character itself, so that
/// BytesOf always gives the same bytes back.
std::string ToUtf8(std::string_view bytes);

/// The bytes that ToUtf8 made text from.
std::string BytesOf(std::string_view text);

} // namespace CallRecordingUtils

#endif
