// What can be said about an item of a group without looking at a candidate: its form, and how long
// the candidates are that it accepts.

#ifndef MATCHING_ITEMFORMS_H
#define MATCHING_ITEMFORMS_H

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "language/Items.h"

namespace CallRecordingUtils {

/// Bounds of a length. The shortest is at least 1, and at most the longest.
struct Lengths {
    std::size_t shortest;
    std::size_t longest;
};

enum class ItemForm {
    Value,       // Literals and "?": accepts texts of its own width at most.
    NumberRange, // Literals, "-" and digits: accepts its low part, and numbers up to the high one.
    Other        // A range of letters, and whatever is not well formed.
};

/// Reads the positive items of a list one after the other.
class ItemReader {
  public:
    explicit ItemReader(std::string_view list) : list_(list) {}

    /// Reads the next item. Returns false when there is none left.
    bool Next() {
        for (Clear(); at_ < list_.size();) {
            Part const part = ReadPart(list_, at_);
            at_ = part.kind == ItemPart::Exclusion ? EndOfItem(list_, part.end) : part.end;
            if (part.kind == ItemPart::Separator && parts_ > 0)
                return true;
            if (part.kind == ItemPart::Separator)
                Clear();
            else if (part.kind != ItemPart::Exclusion)
                Add(part);
        }
        return parts_ > 0;
    }

    ItemForm Form() const {
        return isOther_           ? ItemForm::Other
               : highLength_ == 0 ? ItemForm::Value
                                  : ItemForm::NumberRange;
    }

    /// REQUIRES: Form() is Value. Nothing in it is an exclusion.
    std::string_view Value() const { return list_.substr(begin_, consumed_); }

    /// REQUIRES: Form() is NumberRange.
    std::string_view Low() const { return Value(); }
    std::string_view High() const { return high_; }

    /// Bounds for the length of what the item accepts: what its runs and "?" consume one after the
    /// other, a single letter, or a number no longer than the high part. A run consumes the whole
    /// low part that was read since the last "?", so an item of no known form (ab-cd consumes ab
    /// and then abcd) can consume more than its own length.
    Lengths AcceptedLengths() const {
        std::size_t const longest = std::max({std::size_t{1}, consumed_, highLength_});
        return {isOther_ ? 1 : consumed_, longest};
    }

  private:
    void Clear() {
        begin_ = at_;
        parts_ = lowLength_ = highLength_ = consumed_ = 0;
        isOther_ = false;
    }

    void Add(Part const& part) {
        isOther_ = isOther_ || highLength_ > 0; // Nothing goes on after the high part.
        switch (part.kind) {
        case ItemPart::AnyOne:
            lowLength_ = 0;
            ++consumed_;
            break;
        case ItemPart::Literals: consumed_ += lowLength_ += part.text.size(); break;
        case ItemPart::ToDigits:
            isOther_ = isOther_ || parts_ != 1 || lowLength_ == 0;
            high_ = part.text;
            highLength_ += part.text.size();
            break;
        default: isOther_ = true;
        }
        ++parts_;
    }

    std::string_view const list_;
    std::size_t at_ = 0;
    std::size_t begin_ = 0;
    std::size_t parts_ = 0;
    std::size_t lowLength_ = 0;  // Of the low part so far.
    std::size_t highLength_ = 0; // Of all high parts together.
    std::size_t consumed_ = 0;   // How many characters the runs and "?" consume together.
    std::string_view high_;
    bool isOther_ = false;
};

} // namespace CallRecordingUtils

#endif
