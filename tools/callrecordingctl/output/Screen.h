// The terminal that output goes to, and sentences on it.

#ifndef CALLRECORDINGCTL_OUTPUT_SCREEN_H
#define CALLRECORDINGCTL_OUTPUT_SCREEN_H

#include <cstddef>
#include <string>
#include <utility>

#include <fmt/format.h>

#include "Names.h"

namespace callrecordingctl {

/// The columns of the terminal that a file is, else what COLUMNS says; without both there is no
/// limit, so that grep and awk see one line for each.
std::size_t ScreenWidth(int file);

/// Text made safe before, wrapped at words for standard output; lines after the first are indented.
std::string Wrapped(std::string const& text, std::size_t indent);

/// The same for a command that people paste into a shell.
std::string WrappedCommand(std::string const& command, std::size_t indent);

/// Prints text with its lines wrapped (WrapLines); a line when it is complete.
void PrintText(std::string const& text);

template <typename... Values>
void PrintLines(fmt::format_string<Values...> text, Values&&... values) {
    PrintText(fmt::format(text, std::forward<Values>(values)...));
}

} // namespace callrecordingctl

#endif
