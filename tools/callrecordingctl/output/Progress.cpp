// Writes the line.

#include "output/Progress.h"

#include <cstdio>
#include <string>

#include <unistd.h>

#include <fmt/format.h>

namespace callrecordingctl {

Progress::Progress(std::uint64_t size) : size_(size), isShown_(isatty(STDERR_FILENO) != 0) {}

void Progress::Show(std::uint64_t taken, std::uint64_t calls) {
    Clock::time_point const now = Clock::now();
    if (!isShown_ || now < next_)
        return;
    next_ = now + std::chrono::milliseconds(200);
    double const seconds = std::chrono::duration<double>(now - start_).count();
    constexpr double kMegabyte = 1e6;
    std::string text = fmt::format("{:.1f} MB", static_cast<double>(taken) / kMegabyte);
    if (size_ > 0)
        text += fmt::format(" of {:.1f} MB", static_cast<double>(size_) / kMegabyte);
    if (seconds > 0)
        text += fmt::format(", {:.0f} calls a second", static_cast<double>(calls) / seconds);
    if (size_ > taken && taken > 0)
        text += fmt::format(", {:.0f} s left", seconds * static_cast<double>(size_ - taken) /
                                                   static_cast<double>(taken));
    std::fputs(("\r" + text + "\x1b[K").c_str(), stderr);
    isOnScreen_ = true;
}

void Progress::Clear() {
    if (isOnScreen_)
        std::fputs("\r\x1b[K", stderr);
    isOnScreen_ = false;
}

} // namespace callrecordingctl
