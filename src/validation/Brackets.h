// The two kinds of brackets, and where in a pattern they stand.

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

/// The places of a pattern that have an opening bracket before them and a closing one of the same
/// kind after them. The two need not belong to one group, and so these are all the places from the
/// first opening bracket to the last closing one: looked up once, asked for every character.
class GroupExtent {
  public:
    explicit GroupExtent(std::string_view text)
        : set_(Find(text, kSetBrackets)), range_(Find(text, kRangeBrackets)) {}

    bool Covers(std::size_t at) const { return Covers(set_, at) || Covers(range_, at); }

  private:
    struct Stretch {
        std::size_t first; // npos, which lies behind every place, when there is no opening bracket.
        std::size_t last;  // npos when there is no closing bracket.
    };

    static Stretch Find(std::string_view text, Brackets brackets) {
        return {text.find(brackets.opening), text.rfind(brackets.closing)};
    }
    static bool Covers(Stretch stretch, std::size_t at) {
        return stretch.first <= at && at <= stretch.last && stretch.last != std::string_view::npos;
    }

    Stretch const set_;
    Stretch const range_;
};

/// Returns the first bracket that breaks the order opening, closing, opening, closing.
/// REQUIRES: one of this kind does.
Finding FirstMisplacedBracket(std::string_view text, Brackets brackets);

/// Returns the closing bracket of the wrong kind where finding only tells of one of its
/// consequences: a bracket of text that is not closed or not opened, before which two brackets
/// stand that the user meant as a pair. Else returns finding.
Finding BlameWrongClosing(std::string_view text, Finding const& finding);

} // namespace CallRecordingUtils

#endif
