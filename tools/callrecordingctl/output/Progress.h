// A line on standard error that shows how far a long run is.

#ifndef CALLRECORDINGCTL_OUTPUT_PROGRESS_H
#define CALLRECORDINGCTL_OUTPUT_PROGRESS_H

#include <chrono>
#include <cstdint>

namespace callrecordingctl {

/// Shows nothing unless standard error is a terminal, and there not more than a few times a second.
class Progress {
  public:
    /// size is the number of bytes to read, 0 when it is not known.
    explicit Progress(std::uint64_t size);
    ~Progress() { Clear(); }
    Progress(Progress const&) = delete;
    Progress& operator=(Progress const&) = delete;

    void Show(std::uint64_t taken, std::uint64_t calls);
    /// Erases the line.
    void Clear();

  private:
    using Clock = std::chrono::steady_clock;

    std::uint64_t const size_;
    bool const isShown_;
    bool isOnScreen_ = false;
    Clock::time_point const start_ = Clock::now();
    Clock::time_point next_ = start_;
};

} // namespace callrecordingctl

#endif
