// The classes of characters that the pattern language knows.

#ifndef VALIDATION_CHARACTERCLASSES_H
#define VALIDATION_CHARACTERCLASSES_H

#include <string_view>

namespace CallRecordingUtils {

inline constexpr std::string_view kPunctuationSymbols = "'_+=/~().;$&";
inline constexpr std::string_view kEscapeCodes = "#^@%:";
inline constexpr std::string_view kSyntaxCharacters = "[]{}*?,-!";

enum class SymbolKind { Digit, Capital, Small, Other };

// By ASCII ranges: <cctype> follows the locale that the host process has set.
constexpr SymbolKind KindOf(char c) {
    if (c >= '0' && c <= '9')
        return SymbolKind::Digit;
    if (c >= 'A' && c <= 'Z')
        return SymbolKind::Capital;
    return c >= 'a' && c <= 'z' ? SymbolKind::Small : SymbolKind::Other;
}

constexpr bool Contains(std::string_view characters, char c) {
    return characters.find(c) != std::string_view::npos;
}

/// Whether c stands for itself, or is the stored form of an escape.
constexpr bool IsSymbol(char c) {
    return KindOf(c) != SymbolKind::Other || Contains(kPunctuationSymbols, c) ||
           Contains(kEscapeCodes, c);
}

/// Whether c may occur in a pattern whose escapes are in their stored form.
constexpr bool IsPatternCharacter(char c) {
    return IsSymbol(c) || Contains(kSyntaxCharacters, c);
}

} // namespace CallRecordingUtils

#endif
