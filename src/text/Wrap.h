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
/// the blanks behind it. Breaks at a blank, between a date and its time only if there is no other;
/// else behind a joint of a number or address; else anywhere.
std::string_view TakeLine(std::string_view& text, std::size_t width);

/// Whether text is a date with a time: 2026-11-25 14:03:11.
bool IsTime(std::string_view text);

/// Text without line ends on lines of at most width columns, each with a line end. The blanks that
/// it begins with stay; the second line and those after it begin with indent blanks.
std::string WrapText(std::string_view text, std::size_t width, std::size_t indent);

/// WrapText for each line of text; what a line goes on with is indented a little more than the
/// line. Where the next line is a caret, a line is cut instead, so that the caret stays under its
/// place.
std::string WrapLines(std::string_view text, std::size_t width);

/// WrapText for a line of a shell: breaks between words only, with a "\" before each break, so that
/// what is copied from the screen is the same line to a shell. A word may be too long.
std::string WrapCommand(std::string_view command, std::size_t width, std::size_t indent);

} // namespace CallRecordingUtils

#endif
