// Keeps the number of stretches small.

#include "records/counting/Timeline.h"

#include <iterator>
#include <numeric>

namespace CallRecordingUtils {
namespace {

constexpr CallTime kDay = CallTime{24} * 3600;
// Each is a multiple of the one before, so that stretches never have to be cut.
constexpr CallTime kWidths[] = {3600, kDay, 7 * kDay, 28 * kDay, 364 * kDay};
constexpr CallTime kMonday = 4 * kDay; // Weeks begin on Monday; this was the first one of 1970.
constexpr std::size_t kMost = 100;
constexpr CallTime kYear1990 = 7305 * kDay;
constexpr CallTime kYear2090 = 43830 * kDay;

std::uint64_t CallsIn(Timeline::Counts const& counts) {
    return std::accumulate(
        counts.begin(), counts.end(), std::uint64_t{0},
        [](std::uint64_t sum, auto const& entry) { return sum + entry.second; });
}

} // namespace

CallTime Timeline::Width() const {
    return kWidths[width_];
}

CallTime Timeline::BeginOf(CallTime time) const {
    CallTime const into = (time - kMonday) % Width();
    return time - (into < 0 ? into + Width() : into);
}

void Timeline::KeepFew() {
    while (stretches_.size() > kMost && width_ + 1 < std::size(kWidths))
        Widen();
}

void Timeline::Count(CallTime time, Decision decidedBy) {
    if (time < kYear1990 || time >= kYear2090) {
        ++outside_;
        return;
    }
    ++stretches_[BeginOf(time)][decidedBy];
    KeepFew();
}

void Timeline::AddStretch(CallTime begin, Counts const& counts) {
    for (auto const& [decidedBy, calls] : counts)
        stretches_[BeginOf(begin)][decidedBy] += calls;
    KeepFew();
}

Timeline::Counts Timeline::Totals() const {
    Counts totals;
    for (auto const& stretch : stretches_)
        for (auto const& [decidedBy, calls] : stretch.second)
            totals[decidedBy] += calls;
    return totals;
}

void Timeline::WidenTo(std::size_t most) {
    auto const isWide = [&] {
        CallTime const span = stretches_.rbegin()->first - stretches_.begin()->first;
        return static_cast<std::size_t>(span / Width()) < most;
    };
    while (!stretches_.empty() && !isWide() && width_ + 1 < std::size(kWidths))
        Widen();
}

void Timeline::WidenToWidth(CallTime width) {
    while (Width() < width && width_ + 1 < std::size(kWidths))
        Widen();
}

std::uint64_t Timeline::LeaveOutStragglers() {
    std::uint64_t all = 0;
    for (auto const& stretch : stretches_)
        all += CallsIn(stretch.second);
    std::uint64_t left = 0;
    auto const isLeft = [&left, all](Counts const& counts) {
        bool const isFew = (left + CallsIn(counts)) * 1000 < all;
        left += isFew ? CallsIn(counts) : 0;
        return isFew;
    };
    auto begin = stretches_.begin();
    auto end = stretches_.end();
    while (begin != end && isLeft(begin->second))
        ++begin;
    while (begin != end && isLeft(std::prev(end)->second))
        --end;
    if (left == 0 || (std::prev(end)->first - begin->first) * 2 >=
                         stretches_.rbegin()->first - stretches_.begin()->first)
        return 0;
    stretches_.erase(end, stretches_.end());
    stretches_.erase(stretches_.begin(), begin);
    return left;
}

void Timeline::Widen() {
    ++width_;
    std::map<CallTime, Counts> narrow;
    narrow.swap(stretches_);
    for (auto const& [begin, counts] : narrow)
        for (auto const& [decidedBy, calls] : counts)
            stretches_[BeginOf(begin)][decidedBy] += calls;
}

} // namespace CallRecordingUtils
