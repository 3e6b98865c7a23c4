// The items of a group: which candidates they accept, and which they exclude.

#ifndef MATCHING_ITEMLIST_H
#define MATCHING_ITEMLIST_H

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "language/Characters.h"
#include "matching/ItemForms.h"

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
/// the items consumed up to there, else it is zero.
bool AcceptsCandidate(std::string_view list, std::string_view candidate, Consumed& consumed);

/// Returns whether an exclusion item of list accepts the whole candidate.
bool ExcludesCandidate(std::string_view list, std::string_view candidate);

/// Returns whether list accepts the whole candidate and does not exclude it; consumed is as for
/// AcceptsCandidate.
bool AdmitsCandidate(std::string_view list, std::string_view candidate, Consumed& consumed);

/// Reads the items in text from at on as long as they are symbol items: single literals, ranges
/// from one to another of its kind, and exclusions of either. Calls act(excludes, low, high) for
/// each; what it names is low, and the characters after low up to high. Returns where they end,
/// which is the end of text or a character that no symbol item can go on with; npos when one of the
/// items is of another form.
///
/// Nearly all lists that are asked about a single character hold nothing else. Such a list need not
/// be walked twice, for what it accepts and what it excludes, and holds no numbers to read.
template <typename Act>
inline std::size_t ReadSymbolItems(std::string_view text, std::size_t at, Act act) {
    for (;; ++at) {
        bool const excludes = at < text.size() && text[at] == '!';
        at += excludes ? 1 : 0;
        if (at == text.size() || !IsLiteral(text[at]))
            return std::string_view::npos;
        char const low = text[at++];
        char high = low;
        if (at + 1 < text.size() && text[at] == '-') {
            high = text[at + 1];
            at += 2;
            if (KindOf(low) == SymbolKind::Other || KindOf(low) != KindOf(high))
                return std::string_view::npos;
        }
        act(excludes, low, high);
        if (at == text.size() || text[at] != ',')
            return at;
    }
}

/// What symbol items say about one character.
struct SymbolAnswer {
    std::size_t end; // As ReadSymbolItems returns it.
    bool admit;      // Whether they accept the character and do not exclude it.
};
inline SymbolAnswer AskSymbolItems(std::string_view text, std::size_t at, char c) {
    bool isAccepted = false;
    bool isExcluded = false;
    std::size_t const end = ReadSymbolItems(text, at, [&](bool excludes, char low, char high) {
        (excludes ? isExcluded : isAccepted) |= c == low || (low < c && c <= high);
    });
    return {end, isAccepted && !isExcluded};
}

/// Returns bounds for the length of every candidate that list accepts.
Lengths CandidateLengths(std::string_view list);

} // namespace CallRecordingUtils

#endif
