// How many calls of a kind there were, when, and one of them.

#ifndef RECORDS_COUNTING_TALLY_H
#define RECORDS_COUNTING_TALLY_H

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>

#include "records/reading/CallTime.h"

namespace CallRecordingUtils {

/// A call, for people to find it again.
struct Example {
    std::string from, to; // As they stand in the file; what is very long is cut.
    std::optional<CallTime> time;
    std::string file;
    std::size_t line = 0;
};

struct Tally {
    std::uint64_t calls = 0;
    std::optional<CallTime> first, last; // None where no call of them has a time.
    std::optional<Example> example;      // The first of them; none when there are none.

    /// Counts a call; example is called for the first one only.
    template <typename MakeExample>
    void Count(std::optional<CallTime> time, MakeExample makeExample) {
        if (calls++ == 0)
            example = makeExample();
        if (time)
            Extend(*time, *time);
    }

    void Add(Tally const& other) {
        if (calls == 0)
            example = other.example;
        calls += other.calls;
        if (other.first)
            Extend(*other.first, *other.last);
    }

  private:
    void Extend(CallTime from, CallTime to) {
        first = std::min(first.value_or(from), from);
        last = std::max(last.value_or(to), to);
    }
};

} // namespace CallRecordingUtils

#endif
