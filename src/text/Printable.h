// Text on a terminal: what may be printed, and how wide it is.

#ifndef TEXT_PRINTABLE_H
#define TEXT_PRINTABLE_H

#include <cstddef>
#include <string>
#include <string_view>

namespace CallRecordingUtils {

/// Returns text with a "?" in the place of whatever could steer a terminal.
std::string Printable(std::string_view text);

/// The number of bytes of the character that text begins with; 1 for a byte that is not UTF-8.
std::size_t CharacterLength(std::string_view text);

/// The columns that text, read as UTF-8, takes on a terminal.
std::size_t DisplayWidth(std::string_view text);

/// The number of bytes of text that fit into width columns, combining marks included.
std::size_t BytesWithin(std::string_view text, std::size_t width);

/// Returns text, and on the next line a caret under the byte at position; both indented. Only the
/// surroundings of the position are shown when text would not fit on a line.
std::string CaretText(std::string const& text, std::size_t position);

} // namespace CallRecordingUtils

#endif
