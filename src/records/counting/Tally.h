// Counts calls of a kind, with the first and last time and an example.

#ifndef RECORDS_COUNTING_TALLY_H
#define RECORDS_COUNTING_TALLY_H

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "records/reading/CallTime.h"

namespace CallRecordingUtils {

/// Which record of which file, both counted from 0: the order of calls, however they are counted.
using RecordPlace = std::pair<std::size_t, std::uint64_t>;

/// A call, with what it takes to find it again.
struct Example {
    std::string from, to; // As the file has them; cut when very long.
    std::optional<CallTime> time;
    std::string file;
    std::size_t line = 0;
    RecordPlace place{};
};

/// The first and the last of some times; nothing when there are none.
struct Extent {
    std::optional<std::int64_t> first, last;

    void Take(std::int64_t time) {
        first = std::min(first.value_or(time), time);
        last = std::max(last.value_or(time), time);
    }
    void Add(Extent const& other) {
        if (!other.first)
            return;
        Take(*other.first);
        Take(*other.last);
    }
};

/// With the times of those that have one.
struct Tally : Extent {
    std::uint64_t calls = 0;
    std::optional<Example> example; // The first of the calls in their order.

    /// Counts a call that comes after all that were counted; example is called for the first one
    /// only.
    template <typename MakeExample>
    void Count(std::optional<CallTime> time, MakeExample makeExample) {
        if (calls++ == 0)
            example = makeExample();
        if (time)
            Take(*time);
    }

    /// Adds the calls of other, which may come before or after these or between them.
    void Add(Tally const& other) {
        if (other.example && (!example || other.example->place < example->place))
            example = other.example;
        calls += other.calls;
        Extent::Add(other);
    }
};

} // namespace CallRecordingUtils

#endif
