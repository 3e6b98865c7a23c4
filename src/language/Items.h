// Reads the parts of an item list, the text between the brackets of a group.

#ifndef LANGUAGE_ITEMS_H
#define LANGUAGE_ITEMS_H

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "language/Characters.h"

namespace CallRecordingUtils {

enum class ItemPart {
    Separator, // ",": the next part begins a new item.
    Exclusion, // "!": what follows, up to the next ",", is excluded.
    AnyOne,    // "?"
    Literals,  // A run of literals, in a value or in the low part of a range.
    ToLetter,  // "-" and the letter that ends the range.
    ToDigits,  // "-" and the run of digits that ends the range.
    StrayDash, // "-" before anything else.
    Foreign,   // A character outside the language: its item accepts nothing.
};

struct Part {
    ItemPart kind;
    std::string_view text; // The part itself, without the "-" of ToLetter and ToDigits.
    std::size_t end;       // Where in the list the next part begins.
};

/// Returns how many characters at the start of text belong to a class.
template <bool (*Belongs)(char)>
constexpr std::size_t RunLength(std::string_view text) {
    std::size_t length = 0;
    while (length < text.size() && Belongs(text[length]))
        ++length;
    return length;
}

/// Returns the part of list that begins at `at`. REQUIRES: at is before the end.
inline Part ReadPart(std::string_view list, std::size_t at) {
    std::string_view const rest = list.substr(at);
    char const c = rest.front();
    if (IsLiteral(c)) {
        std::size_t const length = RunLength<IsLiteral>(rest);
        return {ItemPart::Literals, rest.substr(0, length), at + length};
    }
    if (c == '-') {
        bool const hasLetter = rest.size() > 1 && IsLetter(rest[1]);
        std::size_t const length = hasLetter ? 1 : RunLength<IsDigit>(rest.substr(1));
        return {hasLetter     ? ItemPart::ToLetter
                : length == 0 ? ItemPart::StrayDash
                              : ItemPart::ToDigits,
                rest.substr(1, length), at + 1 + length};
    }
    ItemPart const kind = c == ','   ? ItemPart::Separator
                          : c == '!' ? ItemPart::Exclusion
                          : c == '?' ? ItemPart::AnyOne
                                     : ItemPart::Foreign;
    return {kind, rest.substr(0, 1), at + 1};
}

/// Returns where the item ends that `at` is in: at the next "," or at the end of list.
inline std::size_t EndOfItem(std::string_view list, std::size_t at) {
    return std::min(list.find(',', at), list.size());
}

/// Reads the exclusions of a list one after the other. The value of an exclusion ends at the next
/// ",". In the last item of the list each further "!" begins another exclusion.
class ExclusionReader {
  public:
    explicit ExclusionReader(std::string_view list) : list_(list) {}

    /// Reads the next exclusion. Returns false when there is none.
    bool Next() {
        std::size_t const mark = list_.find('!', at_);
        if (mark == std::string_view::npos)
            return false;
        at_ = mark + 1;
        if (end_ < at_) // Only once for each item, or the time would be quadratic.
            end_ = EndOfItem(list_, at_);
        value_ = list_.substr(at_, end_ - at_);
        at_ = end_ < list_.size() ? end_ + 1 : at_;
        return true;
    }

    /// What is excluded: an item list of its own, without a ",".
    std::string_view Value() const { return value_; }

  private:
    std::string_view const list_;
    std::size_t at_ = 0;
    std::size_t end_ = 0; // Where the current item ends.
    std::string_view value_;
};

} // namespace CallRecordingUtils

#endif
