// A range of numbers low-high in an item list, as an automaton that reads a candidate digit by
// digit.

#ifndef ANALYSIS_NUMBERRANGE_H
#define ANALYSIS_NUMBERRANGE_H

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>

#include "common/DecimalNumber.h"
#include "language/Characters.h"

namespace CallRecordingUtils {

/// Deterministic. Its states are what has been read of a candidate, as far as it matters.
class NumberRange {
  public:
    struct State {
        enum Phase { kDigits, kZero, kTail } phase; // kTail: behind the digits that make the value.
        std::size_t length;                         // How many characters have been read.
        int toLow;                                  // How they compare with as many of the low end:
        int toHigh;                                 // below, equal or above; and of the high end.

        bool operator<(State const& other) const {
            return std::tie(phase, length, toLow, toHigh) <
                   std::tie(other.phase, other.length, other.toLow, other.toHigh);
        }
    };
    static constexpr State kStart{State::kDigits, 0, 0, 0};

    NumberRange(std::string_view low, std::string_view high)
        : shortest_(low.size()), longest_(high.size()),
          isFixedWidth_(low.size() >= 2 && low.front() == '0'), low_(Bound(low)),
          high_(Bound(high)), isUnbounded_(!isFixedWidth_ && ParseDecimal(high) == kGreatest) {}

    /// The state behind c; nothing where no candidate that is accepted goes on like this.
    std::optional<State> Next(State const& from, char c) const {
        if (from.length == longest_ || from.phase == State::kZero)
            return std::nullopt;
        State to = from;
        ++to.length;
        if (from.phase == State::kTail)
            return to;
        if (!isFixedWidth_ && !IsDigit(c)) {
            to.phase = State::kTail;
            return from.length > 0 && HasValue(from) ? std::optional(to) : std::nullopt;
        }
        if (!isFixedWidth_ && from.length == 0 && c == '0')
            to.phase = State::kZero;
        to.toLow = Compared(from.toLow, c, low_, from.length);
        to.toHigh = Compared(from.toHigh, c, high_, from.length);
        return to;
    }

    bool Accepts(State const& state) const {
        if (state.length < shortest_ || state.length > longest_ || state.length == 0)
            return false;
        if (isFixedWidth_)
            return state.length == shortest_ && state.toLow >= 0 && state.toHigh <= 0;
        return state.phase == State::kTail || HasValue(state);
    }

  private:
    static constexpr std::int32_t kGreatest = std::numeric_limits<std::int32_t>::max();

    static int Compared(int sofar, char read, std::string_view bound, std::size_t at) {
        if (sofar != 0 || at >= bound.size())
            return sofar;
        auto const left = static_cast<unsigned char>(read);
        auto const right = static_cast<unsigned char>(bound[at]);
        return (left > right) - (left < right);
    }

    std::string Bound(std::string_view text) const {
        return isFixedWidth_ ? std::string(text) : std::to_string(ParseDecimal(text));
    }

    /// Whether the digits read so far make a number from low to high. It has no leading zero, so
    /// of two numbers the one with more digits is greater. Beyond 32 bits every number counts as
    /// the greatest; that one is below low never, and above high only when high is less.
    bool HasValue(State const& state) const {
        bool const isAboveLow =
            state.length > low_.size() || (state.length == low_.size() && state.toLow >= 0);
        bool const isBelowHigh = isUnbounded_ || state.length < high_.size() ||
                                 (state.length == high_.size() && state.toHigh <= 0);
        return isAboveLow && isBelowHigh;
    }

    std::size_t const shortest_;
    std::size_t const longest_;
    bool const isFixedWidth_;
    std::string const low_;  // As texts to compare digit by digit: where values are compared,
    std::string const high_; // without leading zeros.
    bool const isUnbounded_;
};

} // namespace CallRecordingUtils

#endif
