// The items of a group: which candidates they accept, and which they exclude.

#ifndef MATCHING_ITEMLIST_H
#define MATCHING_ITEMLIST_H

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "language/Characters.h"

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

/// What single characters, ranges from one to another, and exclusions of such say of a character.
struct SymbolItems {
    std::size_t end; // Where they end: no "," is behind the last one; npos: there are others.
    bool admit;      // The item that does consumes the character.
};

/// Reads the items in text from at on. Nearly all lists that are asked for a single character hold
/// nothing else; for these there is no need to walk twice, nor to read numbers. What is at the end
/// tells whether it is the whole list that was read.
inline SymbolItems ReadSymbolItems(std::string_view text, std::size_t at, char c) {
    SymbolItems const others{std::string_view::npos, false};
    bool isAccepted = false;
    bool isExcluded = false;
    for (;; ++at) {
        bool const excludes = at < text.size() && text[at] == '!';
        at += excludes ? 1 : 0;
        if (at == text.size() || !IsLiteral(text[at]))
            return others;
        char const low = text[at++];
        char high = low;
        if (at + 1 < text.size() && text[at] == '-') {
            high = text[at + 1];
            at += 2;
            if (KindOf(low) == SymbolKind::Other || KindOf(low) != KindOf(high))
                return others;
        }
        (excludes ? isExcluded : isAccepted) |= c == low || (low < c && c <= high);
        if (at == text.size() || text[at] != ',')
            return {at, isAccepted && !isExcluded};
    }
}

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
