// Finds the sides whose outlines may meet a given one, without comparing it with each.

#ifndef ANALYSIS_MEETINDEX_H
#define ANALYSIS_MEETINDEX_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "analysis/SideOutline.h"

namespace CallRecordingUtils {

/// Keeps numbers under the first characters that the addresses of a side can have. What can begin
/// in many ways is kept apart, and returned always.
class MeetIndex {
  public:
    MeetIndex() : buckets_(kBuckets) {}

    /// Numbers are added ascending.
    void Add(std::uint32_t number, SideOutline const& outline);

    /// How many numbers Find looks at.
    std::size_t Effort(SideOutline const& outline) const;
    /// Returns the numbers from begin up to end of all outlines that may meet outline, ascending.
    std::vector<std::uint32_t> Find(SideOutline const& outline, std::uint32_t begin,
                                    std::uint32_t end) const;

    std::size_t Bytes() const { return bytes_; }

  private:
    static constexpr std::size_t kCharacters = 3;
    static constexpr std::size_t kBuckets = 1 << 4 * kCharacters;
    static constexpr std::size_t kMostBuckets = 64; // That one side may be in.

    using Buckets = std::vector<std::size_t>;
    static Buckets BucketsOf(SideOutline const& outline);

    std::vector<std::vector<std::uint32_t>> buckets_;
    std::vector<std::uint32_t> anywhere_;
    std::vector<std::uint32_t> all_;
    std::size_t bytes_ = 0;
};

} // namespace CallRecordingUtils

#endif
