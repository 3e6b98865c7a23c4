// Reads the elements of a pattern in the stored form. This is the only place that knows where a
// group ends.

#ifndef LANGUAGE_ELEMENTS_H
#define LANGUAGE_ELEMENTS_H

#include <cstddef>
#include <cstring>
#include <string_view>

#include "language/Characters.h"

namespace CallRecordingUtils {

enum class Construct {
    End,      // The end of the pattern.
    Literal,  // One character, which means itself.
    AnyOne,   // "?"
    Set,      // "[items]"
    AnyRun,   // "*"
    Range,    // "<items>"
    Stop,     // A character outside the language: the match ends here with success.
    Unclosed, // A group that is not closed: no match.
};

struct Element {
    Construct construct;
    std::size_t begin; // Where in the pattern it begins.
    std::size_t end;   // Where the next one begins; the same as begin if there is no next one.
};

/// Returns the element of pattern that begins at `at`. REQUIRES: at is not past the end.
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

/// Returns how many literals pattern and address both begin with.
inline std::size_t SharedLiterals(std::string_view pattern, std::string_view address) {
    std::size_t const size = pattern.size() < address.size() ? pattern.size() : address.size();
    constexpr std::size_t kTogether = 8; // Compared at once: no comparison is made more often.
    auto const areLiterals = [](char const* text) {
        bool all = true;
        for (std::size_t i = 0; i < kTogether; ++i)
            all = all & IsLiteral(text[i]);
        return all;
    };
    std::size_t shared = 0;
    while (size - shared >= kTogether &&
           std::memcmp(&pattern[shared], &address[shared], kTogether) == 0 &&
           areLiterals(&pattern[shared]))
        shared += kTogether;
    while (shared < size && pattern[shared] == address[shared] && IsLiteral(pattern[shared]))
        ++shared;
    return shared;
}

/// Returns whether address begins with the literals that pattern begins with. If it does not, the
/// pattern cannot match. Only the first few are compared, since the matcher compares them all
/// again.
inline bool BeginsWithLiteralsOf(std::string_view pattern, std::string_view address) {
    if (pattern.empty() || !IsLiteral(pattern.front()))
        return true;
    if (address.empty() || pattern.front() != address.front()) // Most comparisons end here.
        return false;
    constexpr std::size_t kFew = 16;
    std::size_t const shared = SharedLiterals(pattern.substr(0, kFew), address);
    return shared == kFew || shared == pattern.size() || !IsLiteral(pattern[shared]);
}

/// Returns whether an element of this kind takes exactly one character.
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
