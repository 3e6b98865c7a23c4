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
    std::string wrapped;
    for (std::size_t begin = 0; begin < text.size();) {
        std::size_t const end = std::min(text.find('\n', begin), text.size());
        std::string const line = text.substr(begin, end - begin);
        std::size_t const indent = std::min(line.find_first_not_of(' '), line.size());
        wrapped += Wrapped(line, indent + 2);
        begin = end + 1;
    }
    fmt::print("{}", wrapped);
}

} // namespace callrecordingctl
