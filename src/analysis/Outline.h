// What the addresses that a rule side accepts look like at their fronts and backs.

#ifndef ANALYSIS_OUTLINE_H
#define ANALYSIS_OUTLINE_H

#include <array>
#include <cstddef>
#include <cstdint>

#include "analysis/Symbols.h"

namespace CallRecordingUtils {

/// What the first, or the last, characters of the addresses that a side accepts can be. Two sides
/// whose outlines do not meet accept no address in common; most pairs of a long list are told apart
/// by that.
class Outline {
  public:
    Outline() { lanes_.fill(~std::uint64_t{0}); }

    bool Meets(Outline const& other) const {
        for (std::size_t word = 0; word < lanes_.size(); ++word)
            if (HasEmptyLane(lanes_[word] & other.lanes_[word]))
                return false;
        return true;
    }
    Outline& operator&=(Outline const& other) {
        for (std::size_t word = 0; word < lanes_.size(); ++word)
            lanes_[word] &= other.lanes_[word];
        return *this;
    }

    /// Lane 0 is the kind of the address, the others are its characters. A lane that was not set
    /// says that all is possible.
    static constexpr std::size_t kLanes = 16;
    static constexpr std::size_t kBitsOfLane = 16;
    void Set(std::size_t lane, std::uint16_t bits) {
        std::size_t const shift = lane % 4 * kBitsOfLane;
        lanes_[lane / 4] &= ~(std::uint64_t{0xFFFF} << shift);
        lanes_[lane / 4] |= std::uint64_t{bits} << shift;
    }
    std::uint16_t Get(std::size_t lane) const {
        return static_cast<std::uint16_t>(lanes_[lane / 4] >> lane % 4 * kBitsOfLane);
    }

    static constexpr std::uint16_t kEndBit = 1 << 15; // The address has ended before.

    /// The bit for the characters that symbol belongs to. Each digit has its own.
    static constexpr std::uint16_t BitOf(Symbol symbol) {
        char const c = ByteOf(symbol);
        return static_cast<std::uint16_t>(1U << (symbol < 10            ? unsigned{symbol}
                                                 : c >= 'a' && c <= 'm' ? 10U
                                                 : IsLetter(c)          ? 11U
                                                 : c == '@' || c == ':' ? 12U
                                                 : symbol < kFirstOdd   ? 13U
                                                                        : 14U));
    }

  private:
    /// Four lanes a word. Subtracting 1 from each borrows into the top bit of those that are 0.
    static bool HasEmptyLane(std::uint64_t word) {
        constexpr std::uint64_t kOnes = 0x0001000100010001;
        return ((word - kOnes) & ~word & (kOnes << 15)) != 0;
    }

    std::array<std::uint64_t, kLanes / 4> lanes_;
};

struct Outlines {
    Outline front;
    Outline back;

    bool Meet(Outlines const& other) const {
        return front.Meets(other.front) && back.Meets(other.back);
    }
    Outlines& operator&=(Outlines const& other) {
        front &= other.front;
        back &= other.back;
        return *this;
    }
    bool AreEmpty() const { return !Meet(*this); }
};

} // namespace CallRecordingUtils

#endif
