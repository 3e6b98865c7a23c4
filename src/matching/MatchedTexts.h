// A pattern, the address that it is matched against, and what one element of the pattern takes.

#ifndef MATCHING_MATCHEDTEXTS_H
#define MATCHING_MATCHEDTEXTS_H

#include <cstddef>
#include <string_view>

#include "language/Elements.h"
#include "matching/ItemList.h"

namespace CallRecordingUtils {

/// Where in the address the end of a pattern may lie.
enum class Ending {
    AtEnd,  // At the end of the address.
    AtPort, // Before any ":", as if the pattern went on with ":*".
};

/// One way to match the pattern up to some element: how far into the address it leads, and what the
/// items of groups consumed on it.
struct Way {
    std::size_t position = 0;
    Consumed grouped;
};

/// Consecutive elements that each take a fixed number of characters.
struct FixedRun {
    std::size_t end;   // Where in the pattern they end.
    std::size_t width; // How many characters they take together.
    Construct next;    // What follows them.
};

/// The texts must outlive the object.
struct MatchedTexts {
    std::string_view address;
    std::string_view pattern;
    Ending ending;

    bool CanEndAt(std::size_t position) const {
        bool const isAtEnd = position == address.size();
        return ending == Ending::AtEnd ? isAtEnd : !isAtEnd && address[position] == ':';
    }

    /// Returns how many characters element takes, or 0 when the number is not fixed.
    std::size_t WidthOf(Element const& element) const {
        if (element.construct != Construct::Range)
            return IsStep(element.construct) ? 1 : 0;
        Lengths const lengths = CandidateLengths(ItemsOf(pattern, element));
        return lengths.shortest == lengths.longest ? lengths.longest : 0;
    }

    /// Reads the elements from at on as long as each takes a fixed number of characters.
    FixedRun ReadFixed(std::size_t at) const {
        FixedRun run{at, 0, Construct::End};
        for (;;) {
            for (; run.end < pattern.size() && IsLiteral(pattern[run.end]); ++run.end)
                ++run.width;
            Element const element = ReadElement(pattern, run.end);
            std::size_t const width = WidthOf(element);
            run.next = element.construct;
            if (width == 0)
                return run;
            run.end = element.end;
            run.width += width;
        }
    }

    /// Lets element take the characters from the position of way to end, and moves way there.
    /// Returns false when it does not take them. (The recursion tests the rest of the pattern
    /// before the candidate of a range expression. Both must hold, so the order does not matter.)
    /// REQUIRES: end is not before that position, and for an element of fixed width is that width
    /// behind it; there is an element.
    bool Take(Element const& element, std::size_t end, Way& way) const {
        if (end > address.size())
            return false;
        if (element.construct == Construct::Literal) {
            if (pattern[element.begin] != address[way.position])
                return false;
        } else if (element.construct == Construct::Set || element.construct == Construct::Range) {
            Consumed consumed;
            std::string_view const candidate = address.substr(way.position, end - way.position);
            if (!AdmitsCandidate(ItemsOf(pattern, element), candidate, consumed))
                return false;
            way.grouped += consumed;
        }
        way.position = end;
        return true;
    }
};

} // namespace CallRecordingUtils

#endif
