// Replaces escapes, and finds the way back from the replaced text to the written one.

#include "validation/EscapeSequences.h"

#include "validation/CharacterClasses.h"

namespace CallRecordingUtils {
namespace {

// In the order of kEscapeCodes.
constexpr std::string_view kEscapedCharacters = "*?,-!";

} // namespace

void StoreEscapes(std::string& pattern) {
    // One pass leaves what repeated searching for the five escapes would leave. Two escapes never
    // overlap, since none ends in a backslash; and a code never becomes part of another escape,
    // since it is neither a backslash nor a character that can be escaped.
    std::size_t end = 0;
    for (std::size_t at = 0; at < pattern.size(); ++at) {
        std::size_t row = std::string_view::npos;
        if (pattern[at] == '\\' && at + 1 < pattern.size())
            row = kEscapedCharacters.find(pattern[at + 1]);
        bool const isEscape = row != std::string_view::npos;
        pattern[end++] = isEscape ? kEscapeCodes[row] : pattern[at];
        at += isEscape ? 1 : 0;
    }
    pattern.resize(end);
}

char EscapedCharacter(char code) {
    return kEscapedCharacters[kEscapeCodes.find(code)];
}

std::size_t PositionAsWritten(std::string_view written, std::string_view stored,
                              std::size_t position) {
    std::size_t at = 0;
    // An escape is written with a backslash and stored without, so the two differ at every escape.
    for (std::size_t i = 0; i < position; ++i)
        at += written[at] == stored[i] ? 1 : 2;
    return at;
}

} // namespace CallRecordingUtils
