// Fills and reads the buckets.

#include "analysis/MeetIndex.h"

#include <algorithm>

#include "common/Bits.h"

namespace CallRecordingUtils {

/// The buckets that addresses with this outline can be in; nothing when they are too many.
MeetIndex::Buckets MeetIndex::BucketsOf(SideOutline const& outline) {
    Buckets buckets{0};
    for (std::size_t place = 0; place < kCharacters; ++place) {
        Word const bits = outline.FrontAt(place);
        if (buckets.size() * CountBits(bits) > kMostBuckets)
            return {};
        Buckets longer;
        for (std::size_t const bucket : buckets)
            for (Word left = bits; left != 0; left &= left - 1)
                longer.push_back(bucket * kSlots + LowestBit(left));
        buckets = std::move(longer);
    }
    return buckets;
}

void MeetIndex::Add(std::uint32_t number, SideOutline const& outline) {
    Buckets const buckets = BucketsOf(outline);
    for (std::size_t const bucket : buckets)
        buckets_[bucket].push_back(number);
    if (buckets.empty())
        anywhere_.push_back(number);
    all_.push_back(number);
    bytes_ += (buckets.size() + 2) * sizeof(number);
}

std::size_t MeetIndex::Effort(SideOutline const& outline) const {
    Buckets const buckets = BucketsOf(outline);
    if (buckets.empty())
        return all_.size();
    std::size_t effort = anywhere_.size();
    for (std::size_t const bucket : buckets)
        effort += buckets_[bucket].size();
    return effort;
}

std::vector<std::uint32_t> MeetIndex::Find(SideOutline const& outline, std::uint32_t begin,
                                           std::uint32_t end) const {
    Buckets const buckets = BucketsOf(outline);
    std::vector<std::uint32_t> found;
    auto const add = [&](std::vector<std::uint32_t> const& numbers) {
        auto const first = std::lower_bound(numbers.begin(), numbers.end(), begin);
        found.insert(found.end(), first, std::lower_bound(first, numbers.end(), end));
    };
    if (buckets.empty()) {
        add(all_);
        return found;
    }
    for (std::size_t const bucket : buckets)
        add(buckets_[bucket]);
    if (buckets.size() > 1) {
        std::sort(found.begin(), found.end());
        found.erase(std::unique(found.begin(), found.end()), found.end());
    }
    auto const middle = static_cast<std::ptrdiff_t>(found.size());
    add(anywhere_);
    std::inplace_merge(found.begin(), found.begin() + middle, found.end());
    return found;
}

} // namespace CallRecordingUtils
