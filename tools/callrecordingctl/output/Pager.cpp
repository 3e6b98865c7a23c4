// Runs the pager.

#include "output/Pager.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include <sys/ioctl.h>
#include <unistd.h>

#include <fmt/format.h>

namespace callrecordingctl {
namespace {

std::size_t ScreenHeight() {
    winsize size{};
    bool const isTerminal = isatty(STDOUT_FILENO) != 0 && isatty(STDIN_FILENO) != 0;
    return isTerminal && ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_row : 0;
}

/// Whether less keeps lines at the top, as it does from version 600 on.
bool CanKeepHeader() {
    std::FILE* const less =
        popen("less --version 2>&1", "r"); // NOLINT(cert-env33-c): the one that pages.
    int version = 0;
    if (less == nullptr || std::fscanf(less, "less %d", &version) != 1) // NOLINT(cert-err34-c)
        version = 0;
    if (less != nullptr)
        pclose(less);
    return version >= 600;
}

/// The command that pages; empty for no paging.
std::string PagerCommand(std::size_t headerLines) {
    char const* const terminal = std::getenv("TERM");
    if (terminal == nullptr || std::string(terminal) == "dumb")
        return "";
    char const* const pager = std::getenv("PAGER");
    std::string const command = pager != nullptr ? pager : "less";
    bool const isLess = command == "less" || command.compare(0, 5, "less ") == 0;
    if (isLess && headerLines > 0 && CanKeepHeader())
        return fmt::format("{} --header={}", command, headerLines);
    return command == "cat" ? "" : command;
}

} // namespace

void Page(std::string const& text, std::size_t headerLines) {
    std::size_t const height = ScreenHeight();
    auto const lines = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
    std::string const command = height > 0 && lines + 1 > height ? PagerCommand(headerLines) : "";
    if (!command.empty()) {
        std::fflush(stdout);
        setenv("LESS", "FRX", 0); // As git does: keep colours, do not clear the screen.
        auto const before = std::signal(SIGPIPE, SIG_IGN); // The reader may quit early.
        std::FILE* const pager =
            popen(command.c_str(), "w"); // NOLINT(cert-env33-c): the user chose it.
        if (pager != nullptr) {
            std::fwrite(text.data(), 1, text.size(), pager);
            int const status = pclose(pager);
            std::signal(SIGPIPE, before);
            if (status != 127 << 8)
                return;
        }
        std::signal(SIGPIPE, before);
    }
    fmt::print("{}", text);
}

} // namespace callrecordingctl
