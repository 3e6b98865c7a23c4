// The two kinds of brackets, and checks of where they are in a pattern.

#ifndef VALIDATION_BRACKETS_H
#define VALIDATION_BRACKETS_H

#include <array>
#include <string_view>

#include "validation/Finding.h"

namespace CallRecordingUtils {

struct Brackets {
    char opening;
    char closing;
};
inline constexpr Brackets kSetBrackets{'[', ']'};
inline constexpr Brackets kRangeBrackets{'{', '}'};
inline constexpr std::array<Brackets, 2> kAllBrackets{kSetBrackets, kRangeBrackets};
inline constexpr std::string_view kOpenings = "[{";
inline constexpr std::string_view kClosings = "]}";

/// The characters of a pattern that have an opening bracket before them and a closing one of the
/// same kind after them. The two need not belong to one group, so these are all characters from the
/// first opening bracket to the last closing one.
class GroupExtent {
  public:
    explicit GroupExtent(std::string_view text)
        : set_(Find(text, kSetBrackets)), range_(Find(text, kRangeBrackets)) {}

    /// Whether the character at this position is one of them.
    bool Covers(std::size_t at) const { return Covers(set_, at) || Covers(range_, at); }

  private:
    struct Extent {
        std::size_t first; // npos, which is greater than any position, without an opening bracket.
        std::size_t last;  // npos without a closing bracket.
    };

    static Extent Find(std::string_view text, Brackets brackets) {
        return {text.find(brackets.opening), text.rfind(brackets.closing)};
    }
    static bool Covers(Extent extent, std::size_t at) {
        return extent.first <= at && at <= extent.last && extent.last != std::string_view::npos;
    }

    Extent const set_;
    Extent const range_;
};

/// Returns the first bracket of this kind that breaks the order opening, closing, opening, closing.
/// REQUIRES: there is one.
Finding FirstMisplacedBracket(std::string_view text, Brackets brackets);

/// A closing bracket of the wrong kind leaves other brackets unclosed or unopened, and finding may
/// be about one of these. If so, returns the wrong bracket instead: two brackets that the user must
/// have meant as a pair come before the one in finding. Otherwise returns finding.
Finding BlameWrongClosing(std::string_view text, Finding const& finding);

} // namespace CallRecordingUtils

#endif
