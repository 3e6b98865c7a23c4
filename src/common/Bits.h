// Finds and counts bits of a word. (C++20 has this in its standard library.)

#ifndef COMMON_BITS_H
#define COMMON_BITS_H

#include <array>
#include <cstddef>
#include <cstdint>

namespace CallRecordingUtils {

using Word = std::uint64_t;
inline constexpr std::size_t kWordBits = 64;

/// All runs of six bits in this number are different. So when it has been shifted to the left, its
/// top six bits tell by how many bits.
inline constexpr Word kSixBitsEach = 0x03f79d71b4cb0a89;

constexpr std::array<std::uint8_t, kWordBits> MakeShiftTable() {
    std::array<std::uint8_t, kWordBits> table{};
    for (std::size_t shift = 0; shift < kWordBits; ++shift)
        table[(kSixBitsEach << shift) >> (kWordBits - 6)] = static_cast<std::uint8_t>(shift);
    return table;
}
inline constexpr std::array<std::uint8_t, kWordBits> kShiftTable = MakeShiftTable();

/// Returns the index of the lowest bit that is set in word. REQUIRES: word is not 0.
constexpr std::size_t LowestBit(Word word) {
    return kShiftTable[((word & (~word + 1)) * kSixBitsEach) >> (kWordBits - 6)];
}

/// Returns how many bits are set in word. They are added up in pairs, fours and eights.
constexpr std::size_t CountBits(Word word) {
    word -= word >> 1 & 0x5555555555555555;
    word = (word & 0x3333333333333333) + (word >> 2 & 0x3333333333333333);
    word = (word + (word >> 4)) & 0x0f0f0f0f0f0f0f0f;
    return static_cast<std::size_t>(word * 0x0101010101010101 >> (kWordBits - 8));
}

} // namespace CallRecordingUtils

#endif
