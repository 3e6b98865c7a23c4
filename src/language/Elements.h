// Reads a pattern in the stored form into its elements. Whoever needs to know where a group ends
// asks here.

#ifndef LANGUAGE_ELEMENTS_H
#define LANGUAGE_ELEMENTS_H

#include <cstddef>
#include <string_view>

#include "language/Characters.h"

namespace CallRecordingUtils {

enum class Construct {
    End,      // Nothing is left.
    Literal,  // One character, which stands for itself.
    AnyOne,   // "?"
    Set,      // "[items]"
    AnyRun,   // "*"
    Range,    // "<items>"
    Stop,     // A character outside the language: the match ends here with success.
    Unclosed, // A group that is not closed: no match.
};

struct Element {
    Construct construct;
    std::size_t begin; // Where in the pattern it stands.
    std::size_t end;   // Where the next one does; begin when the reading ends here.
};

/// Returns the element of pattern at the place at, which is at most the length of pattern.
inline Element ReadElement(std::string_view pattern, std::size_t at) {
    if (at == pattern.size())
        return {Construct::End, at, at};
    char const c = pattern[at];
    if (IsLiteral(c))
        return {Construct::Literal, at, at + 1};
    if (c == '?' || c == '*')
        return {c == '?' ? Construct::AnyOne : Construct::AnyRun, at, at + 1};
    if (c != '[' && c != '<')
        return {Construct::Stop, at, at};
    std::size_t const closing = pattern.find(c == '[' ? ']' : '>', at);
    if (closing == std::string_view::npos)
        return {Construct::Unclosed, at, at};
    return {c == '[' ? Construct::Set : Construct::Range, at, closing + 1};
}

/// Whether the element takes exactly one character of an address.
constexpr bool IsStep(Construct construct) {
    return construct == Construct::Literal || construct == Construct::AnyOne ||
           construct == Construct::Set;
}

/// Returns the items of group, a set or range expression of pattern.
inline std::string_view ItemsOf(std::string_view pattern, Element const& group) {
    return pattern.substr(group.begin + 1, group.end - group.begin - 2);
}

} // namespace CallRecordingUtils

#endif
