// The characters of the pattern language, and the count of a pattern's constructs.

#ifndef MATCHING_SYMBOLCLASS_H
#define MATCHING_SYMBOLCLASS_H

#include <array>
#include <string_view>

#include <callrecordingutils/CCallRecordingAssistant.h>

namespace CallRecordingUtils {

// ASCII tests of our own: <cctype> follows the locale that the host process has set.
constexpr bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}
constexpr bool IsLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

constexpr std::array<bool, 256> MakeLiteralTable() {
    std::array<bool, 256> table{};
    for (char c : std::string_view("#^/_=+%~@;().:$&'"))
        table[static_cast<unsigned char>(c)] = true;
    for (int c = 0; c < 128; ++c)
        if (IsDigit(static_cast<char>(c)) || IsLetter(static_cast<char>(c)))
            table[static_cast<std::size_t>(c)] = true;
    return table;
}

inline constexpr std::array<bool, 256> kIsLiteral = MakeLiteralTable();

/// Whether c stands for itself in a pattern.
inline bool IsLiteral(char c) {
    return kIsLiteral[static_cast<unsigned char>(c)];
}

/// Adds the constructs of pattern to the ungrouped counters of counts. Groups count as one each;
/// one that is not closed ends the counting.
void CountConstructs(std::string_view pattern, wild_card_counts& counts);

} // namespace CallRecordingUtils

#endif
