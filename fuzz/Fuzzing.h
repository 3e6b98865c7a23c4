/// @file
/// What the fuzz targets share: the demand that fails a run, and the two texts of an input.

#ifndef FUZZ_FUZZING_H
#define FUZZ_FUZZING_H

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace fuzzing {

/// Ends the process unless holds; the fuzzer then keeps the input.
inline void Require(bool holds, char const* what, std::string const& about = "") {
    if (!holds) {
        std::fprintf(stderr, "Not so: %s: %s\n", what, about.c_str());
        std::abort();
    }
}

/// An input is a text, and behind the first line break another one, so that people can read it.
inline std::pair<std::string, std::string> Texts(std::uint8_t const* data, std::size_t size) {
    std::string const all(data, data + size);
    std::size_t const end = std::min(all.find('\n'), size);
    return {all.substr(0, end), all.substr(std::min(end + 1, size))};
}

} // namespace fuzzing

#endif
