// Measures the terminal and wraps sentences.

#include "output/Screen.h"

#include <algorithm>
#include <cstdlib>

#include <sys/ioctl.h>
#include <unistd.h>

#include "text/Wrap.h"

namespace callrecordingctl {

std::size_t ScreenWidth(int file) {
    winsize size{};
    bool const isTerminal = isatty(file) != 0;
    if (isTerminal && ioctl(file, TIOCGWINSZ, &size) == 0 && size.ws_col > 0)
        return size.ws_col;
    char const* const columns = std::getenv("COLUMNS");
    std::size_t const width = columns != nullptr ? std::strtoul(columns, nullptr, 10) : 0;
    return width > 0 ? width : isTerminal ? 80 : kUnlimited;
}

std::string Wrapped(std::string const& text, std::size_t indent) {
    return WrapText(text, ScreenWidth(STDOUT_FILENO), indent);
}

std::string WrappedCommand(std::string const& command, std::size_t indent) {
    return WrapCommand(command, ScreenWidth(STDOUT_FILENO), indent);
}

void PrintText(std::string const& text) {
    static std::string line; // What has been printed of a line that is not complete.
    line += text;
    std::size_t const end = line.rfind('\n');
    if (end == std::string::npos)
        return;
    fmt::print("{}",
               WrapLines(std::string_view(line).substr(0, end + 1), ScreenWidth(STDOUT_FILENO)));
    line.erase(0, end + 1);
}

} // namespace callrecordingctl
