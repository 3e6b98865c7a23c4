// The bits of a word. (From C++20 on the standard library has these functions.)

#ifndef COMMON_BITS_H
#define COMMON_BITS_H

#include <array>
#include <cstddef>
#include <cstdint>

namespace CallRecordingUtils {

using Word = std::uint64_t;
inline constexpr std::size_t kWordBits = 64;

/// A number in which each run of six bits is different from the others. So after a shift to the
/// left the top six bits tell how far it was shifted.
inline constexpr Word kSixBitsEach = 0x03f79d71b4cb0a89;

constexpr std::size_t TopSixBits(Word word) {
    return static_cast<std::size_t>(word >> (kWordBits - 6));
}

constexpr std::array<std::uint8_t, kWordBits> MakeShiftTable() {
    std::array<std::uint8_t, kWordBits> table{};
    for (std::size_t shift = 0; shift < kWordBits; ++shift)
        table[TopSixBits(kSixBitsEach << shift)] = static_cast<std::uint8_t>(shift);
    return table;
}
inline constexpr std::array<std::uint8_t, kWordBits> kShiftTable = MakeShiftTable();

/// Returns the place of the lowest set bit. REQUIRES: word is not 0.
constexpr std::size_t LowestBit(Word word) {
    return kShiftTable[TopSixBits((word & (~word + 1)) * kSixBitsEach)];
}

/// Returns how many bits are set, added up in pairs, fours and eights.
constexpr std::size_t CountBits(Word word) {
    word -= word >> 1 & 0x5555555555555555;
    word = (word & 0x3333333333333333) + (word >> 2 & 0x3333333333333333);
    word = (word + (word >> 4)) & 0x0f0f0f0f0f0f0f0f;
    return static_cast<std::size_t>(word * 0x0101010101010101 >> (kWordBits - 8));
}

} // namespace CallRecordingUtils

#endif
