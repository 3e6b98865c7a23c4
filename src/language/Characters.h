// The alphabet of the pattern language: what a character means in a pattern.

#ifndef LANGUAGE_CHARACTERS_H
#define LANGUAGE_CHARACTERS_H

#include <array>
#include <cstddef>
#include <string_view>

namespace CallRecordingUtils {

// Not <cctype>, which follows the locale that the host process has set.
constexpr bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}
constexpr bool IsLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

/// The kinds of characters that ranges are made of. The two ends of a range are of one kind.
enum class SymbolKind { Digit, Capital, Small, Other };
constexpr SymbolKind KindOf(char c) {
    if (IsDigit(c))
        return SymbolKind::Digit;
    if (!IsLetter(c))
        return SymbolKind::Other;
    return c <= 'Z' ? SymbolKind::Capital : SymbolKind::Small;
}

/// Punctuation that means itself in both forms of a pattern.
inline constexpr std::string_view kPunctuation = "'_+=/~().;$&";

/// The characters that the entry form escapes with a backslash, and in the same order the codes
/// that the stored form has in their place. To the matcher a code is a literal like any other.
inline constexpr std::string_view kEscapedCharacters = "*?,-!";
inline constexpr std::string_view kEscapeCodes = "#^@%:";

/// The characters that have a meaning of their own in the entry form. (Escapes are replaced first.)
inline constexpr std::string_view kEntrySyntax = "[]{}*?,-!";

constexpr bool Contains(std::string_view characters, char c) {
    return characters.find(c) != std::string_view::npos;
}

constexpr std::array<bool, 256> MakeLiteralTable() {
    std::array<bool, 256> table{};
    for (std::size_t byte = 0; byte < 128; ++byte) {
        char const c = static_cast<char>(byte);
        table[byte] =
            IsDigit(c) || IsLetter(c) || Contains(kPunctuation, c) || Contains(kEscapeCodes, c);
    }
    return table;
}
inline constexpr std::array<bool, 256> kIsLiteral = MakeLiteralTable();

/// Returns whether c is a literal, that is, means itself in the stored form.
constexpr bool IsLiteral(char c) {
    return kIsLiteral[static_cast<unsigned char>(c)];
}

/// Returns whether c may occur in the entry form of a pattern whose escapes have been replaced.
constexpr bool IsEntryCharacter(char c) {
    return IsLiteral(c) || Contains(kEntrySyntax, c);
}

} // namespace CallRecordingUtils

#endif
