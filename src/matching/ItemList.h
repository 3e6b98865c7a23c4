// The items of a group: which candidates they accept, and which they exclude.

#ifndef MATCHING_ITEMLIST_H
#define MATCHING_ITEMLIST_H

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace CallRecordingUtils {

/// What the items of a list consumed of a candidate.
struct Consumed {
    std::uint32_t symbols = 0;
    std::uint32_t questions = 0;

    Consumed& operator+=(Consumed const& other) {
        symbols += other.symbols;
        questions += other.questions;
        return *this;
    }
};

/// Returns whether a positive item of list accepts the whole candidate. On true consumed is what
/// was consumed on the way, else it is zero.
bool AcceptsCandidate(std::string_view list, std::string_view candidate, Consumed& consumed);

/// Returns whether an exclusion item of list accepts the whole candidate.
bool ExcludesCandidate(std::string_view list, std::string_view candidate);

/// Both tests: accepted and not excluded.
bool AdmitsCandidate(std::string_view list, std::string_view candidate, Consumed& consumed);

/// Bounds of a length.
struct Lengths {
    std::size_t shortest;
    std::size_t longest;
};

/// Returns the lengths between which every candidate lies that list accepts. The longest is at
/// least the shortest, which is at least 1.
Lengths CandidateLengths(std::string_view list);

} // namespace CallRecordingUtils

#endif
