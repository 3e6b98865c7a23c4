// Keeps the stretches of time few.

#include "Timeline.h"

#include <iterator>

namespace callrecordingctl {
namespace {

constexpr CallTime kDay = 24 * 3600;
// Each is a multiple of the one before, so that stretches never have to be cut.
constexpr CallTime kWidths[] = {3600, kDay, 7 * kDay, 28 * kDay, 364 * kDay};
constexpr CallTime kMonday = 4 * kDay; // Weeks begin with one; this was the first of 1970.
constexpr std::size_t kMost = 100;

} // namespace

CallTime Timeline::Width() const {
    return kWidths[width_];
}

CallTime Timeline::BeginOf(CallTime time) const {
    CallTime const into = (time - kMonday) % Width();
    return time - (into < 0 ? into + Width() : into);
}

void Timeline::Add(CallTime time, std::size_t decidedBy) {
    ++stretches_[BeginOf(time)][decidedBy];
    while (stretches_.size() > kMost && width_ + 1 < std::size(kWidths))
        Widen();
}

void Timeline::Widen() {
    ++width_;
    std::map<CallTime, Counts> narrow;
    narrow.swap(stretches_);
    for (auto const& [begin, counts] : narrow)
        for (auto const& [decidedBy, calls] : counts)
            stretches_[BeginOf(begin)][decidedBy] += calls;
}

} // namespace callrecordingctl
