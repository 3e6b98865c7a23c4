// Calls over time, by what decided them.

#ifndef CALLRECORDINGCTL_REPLAY_TIMELINE_H
#define CALLRECORDINGCTL_REPLAY_TIMELINE_H

#include <cstddef>
#include <cstdint>
#include <map>

#include "CallTime.h"

namespace callrecordingctl {

/// Counts by hours, and once these would be too many by days, weeks, four weeks or 52 weeks, so
/// that its size does not grow with the calls.
class Timeline {
  public:
    using Counts = std::map<std::size_t, std::uint64_t>; // By what decided.

    void Add(CallTime time, std::size_t decidedBy);

    /// How long each stretch of time is, in seconds.
    CallTime Width() const;
    /// The stretches with calls by their beginnings.
    std::map<CallTime, Counts> const& Stretches() const { return stretches_; }

  private:
    CallTime BeginOf(CallTime time) const;
    void Widen();

    std::size_t width_ = 0; // Index of one in the table of widths.
    std::map<CallTime, Counts> stretches_;
};

} // namespace callrecordingctl

#endif
