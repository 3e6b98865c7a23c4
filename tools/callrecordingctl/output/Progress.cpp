// Writes the line.

#include "output/Progress.h"

#include <cstdio>

#include <unistd.h>

#include <fmt/format.h>

namespace callrecordingctl {

Progress::Progress(std::uint64_t size) : size_(size), isShown_(isatty(STDERR_FILENO) != 0) {}

double Progress::Seconds() const {
    return std::chrono::duration<double>(Clock::now() - start_).count();
}

void Progress::Show(std::uint64_t done, std::string text) {
    next_ = Clock::now() + std::chrono::milliseconds(200);
    if (size_ > done && done > 0)
        text += fmt::format(", {:.0f} s left", Seconds() * static_cast<double>(size_ - done) /
                                                   static_cast<double>(done));
    std::fputs(("\r" + text + "\x1b[K").c_str(), stderr);
    isOnScreen_ = true;
}

void Progress::Clear() {
    if (isOnScreen_)
        std::fputs("\r\x1b[K", stderr);
    isOnScreen_ = false;
}

} // namespace callrecordingctl
