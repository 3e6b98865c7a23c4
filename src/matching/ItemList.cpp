// The items of a group: one walk over the list, consuming the candidate as the items say.

#include "matching/ItemList.h"

#include <algorithm>
#include <memory>
#include <string>

#include "common/DecimalNumber.h"
#include "language/Items.h"

namespace CallRecordingUtils {
namespace {

/// REQUIRES: neither text is empty. (Most answers fall with the first character.)
bool StartsWith(std::string_view text, std::string_view start) {
    return text.front() == start.front() && text.substr(0, start.size()) == start;
}

/// The low or high part of a range, put together from the runs of its item. All but odd lists
/// (a-bc) have one run a part, which is only looked at and never copied.
class RangePart {
  public:
    void Clear() { text_ = {}; }

    void Append(std::string_view run) {
        if (text_.empty()) {
            text_ = run;
            return;
        }
        if (joined_ == nullptr)
            joined_ = std::make_unique<std::string>();
        if (text_.data() != joined_->data())
            *joined_ = text_;
        text_ = joined_->append(run);
    }

    std::string_view Text() const { return text_; }

  private:
    std::string_view text_; // Into the list, or into joined_.
    std::unique_ptr<std::string> joined_;
};

/// Whether candidate is a number from low to high. A low part such as 00 makes the comparison one
/// of texts of that width.
bool IsInNumberRange(std::string_view candidate, std::string_view low, std::string_view high) {
    if (candidate.size() < low.size() || candidate.size() > high.size())
        return false;
    if (low.size() >= 2 && low.front() == '0')
        return candidate.size() == low.size() && low <= candidate && candidate <= high;
    if (!IsDigit(candidate.front()) || (candidate.front() == '0' && candidate.size() != 1))
        return false;
    std::int32_t const value = ParseDecimal(candidate);
    return ParseDecimal(low) <= value && value <= ParseDecimal(high);
}

/// One walk over an item list with one candidate, one method for each kind of thing met on the way.
/// The methods return true when the candidate is accepted.
class ItemWalk {
  public:
    enum Extent { ManyItems, OneItem };

    ItemWalk(std::string_view list, std::string_view candidate, Extent extent)
        : list_(list), candidate_(candidate), extent_(extent), remaining_(candidate) {}

    bool Run() {
        if (candidate_.empty())
            return false;
        while (at_ < list_.size())
            if (TakeNext())
                return true;
        consumed_ = {};
        return false;
    }

    Consumed const& GetConsumed() const { return consumed_; }

  private:
    bool TakeNext() {
        switch (char const c = list_[at_]) {
        case ',': StartItem(); return false;
        case '!': SkipItem(); return false; // An exclusion.
        case '?': return TakeAnyOne();
        case '-': return TakeRange();
        default:
            if (IsLiteral(c))
                return TakeLiterals();
            FailItem(); // Not of the language.
            return false;
        }
    }

    void StartItem() {
        ++at_;
        remaining_ = candidate_;
        low_.Clear();
        high_.Clear();
    }

    void SkipItem() {
        at_ = extent_ == OneItem ? list_.size() : std::min(list_.find(',', at_), list_.size());
    }

    void FailItem() {
        consumed_ = {};
        SkipItem();
    }

    bool IsAt(std::string_view ends) const {
        return at_ == list_.size() || ends.find(list_[at_]) != std::string_view::npos;
    }

    bool TakeAnyOne() {
        low_.Clear();
        ++consumed_.questions;
        remaining_.remove_prefix(1);
        ++at_;
        return EndIfUsedUp(",");
    }

    bool TakeLiterals() {
        std::size_t const length = RunLength<IsLiteral>(list_.substr(at_));
        low_.Append(list_.substr(at_, length));
        at_ += length;
        if (!StartsWith(remaining_, low_.Text())) {
            while (at_ < list_.size() && list_[at_] == '?')
                ++at_;
            return false;
        }
        remaining_.remove_prefix(low_.Text().size());
        consumed_.symbols += static_cast<std::uint32_t>(low_.Text().size());
        return EndIfUsedUp(",-"); // Before a "-" the candidate is the low end of a range.
    }

    /// Once the candidate is used up, its item accepts it if it ends here as well.
    bool EndIfUsedUp(std::string_view ends) {
        if (!remaining_.empty())
            return false;
        if (IsAt(ends))
            return true;
        FailItem();
        return false;
    }

    bool TakeRange() {
        ++at_;
        if (at_ == list_.size())
            return false;
        if (IsLetter(list_[at_]))
            return TakeLetterRange(list_[at_++]);
        if (IsDigit(list_[at_]))
            return TakeNumberRange();
        return false;
    }

    bool TakeLetterRange(char high) {
        if (candidate_.size() != 1 || !IsLetter(candidate_.front()) || low_.Text().empty())
            return false;
        char const letter = candidate_.front(); // ASCII, as is low: signedness does not matter.
        if (low_.Text().front() >= letter || letter > high)
            return false;
        ++consumed_.symbols;
        return true;
    }

    bool TakeNumberRange() {
        std::size_t const length = RunLength<IsDigit>(list_.substr(at_));
        high_.Append(list_.substr(at_, length));
        at_ += length;
        if (!IsInNumberRange(candidate_, low_.Text(), high_.Text()))
            return false;
        consumed_.symbols += static_cast<std::uint32_t>(remaining_.size());
        return true;
    }

    std::string_view const list_;
    std::string_view const candidate_;
    Extent const extent_;
    std::string_view remaining_; // Never empty at the head of the walk: an item ends when it is.
    std::size_t at_ = 0;
    RangePart low_;
    RangePart high_;
    Consumed consumed_;
};

} // namespace

bool AcceptsCandidate(std::string_view list, std::string_view candidate, Consumed& consumed) {
    ItemWalk walk(list, candidate, ItemWalk::ManyItems);
    bool const accepted = walk.Run();
    consumed = walk.GetConsumed();
    return accepted;
}

// The value of the last item is the rest of the list, exclusions within it included; so neither the
// search for a "," nor the walk may run to the end of the list for every "!".
bool ExcludesCandidate(std::string_view list, std::string_view candidate) {
    std::size_t comma = 0;
    for (std::size_t at = list.find('!'); at != std::string_view::npos; at = list.find('!', at)) {
        ++at;
        if (comma < at)
            comma = list.find(',', at);
        if (ItemWalk(list.substr(at, comma - at), candidate, ItemWalk::OneItem).Run())
            return true;
        if (comma != std::string_view::npos)
            at = comma + 1;
    }
    return false;
}

bool AdmitsCandidate(std::string_view list, std::string_view candidate, Consumed& consumed) {
    return AcceptsCandidate(list, candidate, consumed) && !ExcludesCandidate(list, candidate);
}

// An item accepts what its runs and "?" consume in turn, a single letter, or a number no longer
// than the high part. A run consumes the whole low part gathered so far, so in an odd item (ab-cd
// consumes ab, then abd) the length can exceed the item's own; hence the sums.
std::size_t LongestCandidate(std::string_view list) {
    std::size_t longest = 1;
    std::size_t low = 0;
    std::size_t high = 0;
    std::size_t consumable = 0;
    std::size_t at = 0;
    while (at < list.size()) {
        std::string_view const rest = list.substr(at);
        std::size_t step = 1;
        if (rest.front() == ',') {
            low = high = consumable = 0;
        } else if (rest.front() == '!') {
            step = std::min(rest.find(','), rest.size());
        } else if (rest.front() == '?') {
            ++consumable;
        } else if (rest.front() == '-') {
            std::size_t const digits = RunLength<IsDigit>(rest.substr(1));
            bool const hasLetter = rest.size() > 1 && IsLetter(rest[1]);
            high += digits;
            step += hasLetter ? 1 : digits;
        } else if (IsLiteral(rest.front())) {
            step = RunLength<IsLiteral>(rest);
            low += step;
            consumable += low;
        }
        at += step;
        longest = std::max({longest, consumable, high});
    }
    return longest;
}

} // namespace CallRecordingUtils
