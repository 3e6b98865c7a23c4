// What is written around an address, or in it, and is no part of the number or the host.

#ifndef CALLS_CLEANINGS_H
#define CALLS_CLEANINGS_H

#include <array>
#include <bitset>
#include <cstddef>

namespace CallRecordingUtils {

/// What reading an address can leave out.
enum Cleaning : std::size_t {
    kCleaningBlanks,     // Around it.
    kCleaningName,       // "Alice" before <...>.
    kCleaningBrackets,   // The < and > themselves.
    kCleaningSip,        // sip: or sips:
    kCleaningTel,        // tel:
    kCleaningParameters, // ;user=phone, ?subject=x, ;tag=1 after the ">", the ":secret" of a user.
    kCleaningSeparators, // Blanks, "-", ".", "(" and ")" in a number.
    kCleaningCount
};

/// One word for each.
constexpr std::array<char const*, kCleaningCount> kCleaningWords{
    "blanks", "name", "brackets", "sip:", "tel:", "parameters", "separators"};

using Cleanings = std::bitset<kCleaningCount>;

} // namespace CallRecordingUtils

#endif
