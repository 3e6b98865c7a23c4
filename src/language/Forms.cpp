// Converts patterns between their two forms, and finds a position of one form in the other.

#include "language/Forms.h"

#include <algorithm>

#include "language/Characters.h"

namespace CallRecordingUtils {

std::string ToStoredForm(std::string_view entry) {
    std::string stored(entry);
    StoreEscapes(stored);
    std::replace(stored.begin(), stored.end(), '{', '<');
    std::replace(stored.begin(), stored.end(), '}', '>');
    return stored;
}

std::string ToEntryForm(std::string_view stored) {
    std::string entry;
    for (char const c : stored)
        if (Contains(kEscapeCodes, c))
            entry.append({'\\', EscapedCharacter(c)});
        else
            entry += c == '<' ? '{' : c == '>' ? '}' : c;
    return entry;
}

void StoreEscapes(std::string& pattern) {
    // One pass gives the same result as searching for each of the five escapes in turn: escapes do
    // not overlap, since none ends in a backslash, and a code never becomes part of another escape,
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
    // The two differ at every escape, which is written with a backslash and stored without one.
    for (std::size_t i = 0; i < position; ++i)
        at += written[at] == stored[i] ? 1 : 2;
    return at;
}

} // namespace CallRecordingUtils
