// Calls over time, by what decided them.

#ifndef RECORDS_COUNTING_TIMELINE_H
#define RECORDS_COUNTING_TIMELINE_H

#include <cstddef>
#include <cstdint>
#include <map>

#include "records/reading/CallTime.h"

namespace CallRecordingUtils {

/// The place of the rule that decides a call, kNoRule if none does, or kNotDecided if the rules of
/// its time are not known.
using Decision = std::size_t;
constexpr Decision kNoRule = static_cast<Decision>(-1);
constexpr Decision kNotDecided = static_cast<Decision>(-2);
constexpr bool IsRule(Decision decision) {
    return decision < kNotDecided;
}

/// Counts by the hour and, once that would be too many hours, by the day, the week, four weeks or
/// 52 weeks, from 1990 to 2089: so its size does not grow with the calls, whatever their times.
class Timeline {
  public:
    using Counts = std::map<Decision, std::uint64_t>;

    void Count(CallTime time, Decision decidedBy);

    /// Adds what other counted, with its decisions under other names. How long the stretches become
    /// depends on the calls alone, and not on the order in which they are added: the more calls
    /// there are, the more stretches of any length they are in.
    template <typename NewName>
    void Add(Timeline const& other, NewName newName) {
        WidenToWidth(other.Width());
        for (auto const& [begin, counts] : other.stretches_) {
            Counts renamed;
            for (auto const& [decidedBy, calls] : counts)
                renamed[newName(decidedBy)] += calls;
            AddStretch(begin, renamed);
        }
        outside_ += other.outside_;
    }
    /// Adds calls in one stretch of this width.
    void AddStretch(CallTime begin, Counts const& counts);
    void AddOutside(std::uint64_t calls) { outside_ += calls; }

    /// Calls before 1990 and after 2089: clocks that were wrong.
    std::uint64_t Outside() const { return outside_; }

    /// The length of each stretch of time, in seconds.
    CallTime Width() const;
    /// The stretches that have calls, by their beginnings.
    std::map<CallTime, Counts> const& Stretches() const { return stretches_; }

    /// All calls, by what decided them.
    Counts Totals() const;

    /// Lengthens the stretches until at most `most` of them, counting empty ones, cover the time
    /// from the first to the last call; or until they are 52 weeks long.
    void WidenTo(std::size_t most);
    /// Lengthens the stretches until they have at least this length.
    void WidenToWidth(CallTime width);
    /// Drops calls far from all others, as a clock that was wrong makes them: fewer than one in
    /// 1,000, and only if the rest then covers less than half the time. Returns how many were
    /// dropped.
    std::uint64_t LeaveOutStragglers();

  private:
    CallTime BeginOf(CallTime time) const;
    void KeepFew();
    void Widen();

    std::size_t width_ = 0; // Index into the table of widths.
    std::map<CallTime, Counts> stretches_;
    std::uint64_t outside_ = 0;
};

} // namespace CallRecordingUtils

#endif
