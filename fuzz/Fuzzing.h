/// @file
/// What the fuzz targets share: the demand that fails a run, and the two texts of an input.

#ifndef FUZZ_FUZZING_H
#define FUZZ_FUZZING_H

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "support/SlowMatcher.h"

namespace fuzzing {

/// Ends the process unless holds; the fuzzer then keeps the input.
inline void Require(bool holds, char const* what, std::string const& about = "") {
    if (!holds) {
        std::fprintf(stderr, "Not so: %s: %s\n", what, about.c_str());
        std::abort();
    }
}

/// An input is a text, and behind the first line break another one, so that people can read it.
struct Texts {
    std::string first;
    std::string second;

    Texts(std::uint8_t const* data, std::size_t size) {
        std::string_view const all(reinterpret_cast<char const*>(data), size);
        std::size_t const end = std::min(all.find('\n'), all.size());
        first = all.substr(0, end);
        second = all.substr(std::min(end + 1, all.size()));
    }
};

/// Compares the library's matcher with the slow one, answer and counts. Where the slow one would
/// take too long, the library's still has to come to an end.
inline void CompareMatchers(CallRecordingUtils::CCallRecordingAssistant const& assistant,
                            std::string const& address, std::string const& pattern) {
    auto const answer = SlowMatcher::LibraryMatch(assistant, address, pattern);
    double ways = static_cast<double>(pattern.size());
    for (char c : pattern)
        ways *= c == '*' || c == '<' ? static_cast<double>(address.size() + 1) : 1;
    if (ways < 500000) {
        Require(answer == SlowMatcher::Match(address, pattern), "both matchers agree",
                pattern + " against " + address);
    }
}

} // namespace fuzzing

#endif
