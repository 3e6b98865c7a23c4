// Calls over time, by what decided them.

#ifndef RECORDS_COUNTING_TIMELINE_H
#define RECORDS_COUNTING_TIMELINE_H

#include <cstddef>
#include <cstdint>
#include <map>

#include "records/reading/CallTime.h"

namespace CallRecordingUtils {

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

    /// All calls by what decided.
    Counts Totals() const;

    /// Makes stretches longer until no more than most of them, those without calls too, reach from
    /// the first to the last; or until they are the longest there are.
    void WidenTo(std::size_t most);
    /// Leaves out fewer than one in 1,000 calls where the others then take less than half the time:
    /// a clock that was wrong would leave nothing to see. Returns how many.
    std::uint64_t LeaveOutStragglers();

  private:
    CallTime BeginOf(CallTime time) const;
    void Widen();

    std::size_t width_ = 0; // Index of one in the table of widths.
    std::map<CallTime, Counts> stretches_;
};

} // namespace CallRecordingUtils

#endif
