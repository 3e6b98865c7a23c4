// A line on standard error that shows how far a long run is.

#ifndef CALLRECORDINGCTL_OUTPUT_PROGRESS_H
#define CALLRECORDINGCTL_OUTPUT_PROGRESS_H

#include <chrono>
#include <cstdint>
#include <string>

namespace callrecordingctl {

/// Shows nothing unless standard error is a terminal, and there nothing in the first second, and
/// then not more than a few times a second.
class Progress {
  public:
    /// size is how much there is to do, 0 when it is not known.
    explicit Progress(std::uint64_t size);
    ~Progress() { Clear(); }
    Progress(Progress const&) = delete;
    Progress& operator=(Progress const&) = delete;

    std::uint64_t Size() const { return size_; }
    /// How long it has run.
    double Seconds() const;

    /// Whether it is time to show something.
    bool IsDue() const { return isShown_ && Clock::now() >= next_; }
    /// Shows text, and how long what is left will take. REQUIRES: IsDue().
    void Show(std::uint64_t done, std::string text);
    /// Erases the line.
    void Clear();

  private:
    using Clock = std::chrono::steady_clock;

    std::uint64_t const size_;
    bool const isShown_;
    bool isOnScreen_ = false;
    Clock::time_point const start_ = Clock::now();
    Clock::time_point next_ = start_ + std::chrono::seconds(1);
};

} // namespace callrecordingctl

#endif
