// Text on lines of a limited width.

#ifndef TEXT_WRAP_H
#define TEXT_WRAP_H

#include <cstddef>
#include <limits>
#include <string>
#include <string_view>

namespace CallRecordingUtils {

/// The width where nothing has to be wrapped.
constexpr std::size_t kUnlimited = std::numeric_limits<std::size_t>::max();

/// Takes one line of at most width columns, and at least one character, from the front of text, and
/// the blanks behind it. Breaks at a blank, but not between a date and its time; else behind a
/// joint of a number or address; else anywhere.
std::string_view TakeLine(std::string_view& text, std::size_t width);

/// Text without line ends on lines of at most width columns, each with a line end. The blanks that
/// it begins with stay; the second line and those after it begin with indent blanks.
std::string WrapText(std::string_view text, std::size_t width, std::size_t indent);

/// The same for a line of a shell: breaks between words only, with a "\" before each break, so that
/// what is copied from the screen is the same line to a shell. A word may be too long.
std::string WrapCommand(std::string_view command, std::size_t width, std::size_t indent);

} // namespace CallRecordingUtils

#endif
