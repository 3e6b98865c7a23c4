// Goes through a range expression once, character by character.

#include "validation/RangeCheck.h"

#include <algorithm>
#include <string>

#include <StringUtils.h>

#include "common/DecimalNumber.h"

namespace CallRecordingUtils {
namespace {

bool IsAlpha(std::string const& text) {
    return StringUtils::IsAlpha(text, false);
}
bool IsNumeric(std::string const& text) {
    return StringUtils::IsNumeric(text, false, false);
}

/// Whether a number of any length is less than another.
bool IsLess(std::string_view number, std::string_view other) {
    number.remove_prefix(std::min(number.find_first_not_of('0'), number.size()));
    other.remove_prefix(std::min(other.find_first_not_of('0'), other.size()));
    return number.size() == other.size() ? number < other : number.size() < other.size();
}

class RangeScan {
  public:
    explicit RangeScan(std::string_view range) : range_(range) {}

    std::optional<Finding> Run() {
        if (range_.empty())
            return Finding{PatternFault::EmptyGroup, 0, 0};
        for (; at_ < range_.size(); ++at_)
            if (auto finding = Visit(range_[at_]))
                return finding;
        return RequirePositiveItem();
    }

  private:
    std::optional<Finding> Visit(char c) {
        switch (c) {
        case '-': return BeginHighPart();
        case '}':
        case ',': return CompleteItem();
        case '*': return Finding{PatternFault::StarInGroup, at_, 1};
        case '!':
            if (auto finding = CheckExclusionMark())
                return finding;
            break;
        case '{': return std::nullopt;
        default: break;
        }
        Collect(c);
        return std::nullopt;
    }

    std::optional<Finding> BeginHighPart() {
        if (hasDash_)
            return Finding{PatternFault::RepeatedDash, at_, 1};
        hasDash_ = true;
        dashAt_ = at_;
        isPositive_ = true;
        return std::nullopt;
    }

    std::optional<Finding> CheckExclusionMark() const {
        char const before = at_ == 0 ? '\0' : range_[at_ - 1];
        if (before != '{' && before != ',')
            return Finding{PatternFault::MisplacedExclusion, at_, 1};
        char const after = at_ + 1 == range_.size() ? '\0' : range_[at_ + 1];
        if (after == '}' || after == ',')
            return Finding{PatternFault::EmptyExclusion, at_, 1};
        return std::nullopt;
    }

    void Collect(char c) {
        if (hasDash_) {
            high_ += c;
            return;
        }
        if (low_.empty())
            itemAt_ = at_;
        low_ += c;
    }

    std::optional<Finding> CompleteItem() {
        if (low_.empty())
            return MissingLowPart();
        if (low_.front() != '!')
            isPositive_ = true;
        if (hasDash_) {
            if (auto finding = CheckEnds())
                return finding;
        }
        low_.clear();
        high_.clear();
        hasDash_ = false;
        hasItem_ = true;
        return std::nullopt;
    }

    Finding MissingLowPart() const {
        if (hasDash_)
            return {PatternFault::IncompleteRange, dashAt_, 1};
        char const before = at_ == 0 ? '\0' : range_[at_ - 1];
        if (range_[at_] == ',')
            return {PatternFault::EmptyItem, at_, 1};
        if (before == ',')
            return {PatternFault::EmptyItem, at_ - 1, 1};
        if (before == '{')
            return {PatternFault::EmptyGroup, at_ - 1, 2};
        return {PatternFault::UnopenedGroup, at_, 1};
    }

    std::optional<Finding> CheckEnds() const {
        if (high_.empty())
            return Finding{PatternFault::IncompleteRange, dashAt_, 1};
        return IsAlpha(low_) ? CheckLetters() : CheckNumbers();
    }

    std::optional<Finding> CheckLetters() const {
        if (!IsAlpha(high_))
            return WrongEnds(PatternFault::MixedRange);
        if (static_cast<unsigned char>(high_.front()) <= static_cast<unsigned char>(low_.front()))
            return WrongEnds(PatternFault::DescendingRange);
        return std::nullopt;
    }

    std::optional<Finding> CheckNumbers() const {
        if (!IsNumeric(low_) || !IsNumeric(high_))
            return WrongEnds(PatternFault::MixedRange);
        bool const fixesWidth = low_.size() > 1 && (low_.front() == '0' || high_.front() == '0');
        if (fixesWidth && low_.size() != high_.size())
            return WrongEnds(PatternFault::UnequalWidth);
        if (ParseDecimal(low_) < ParseDecimal(high_))
            return std::nullopt;
        return WrongEnds(IsLess(low_, high_) ? PatternFault::NumberTooLarge
                                             : PatternFault::DescendingRange);
    }

    /// Returns what the user should look at in a range with wrong ends. A bracket or "!" comes
    /// first, since with that the item is wrong whatever the ends are.
    Finding WrongEnds(PatternFault fault) const {
        std::string_view const item = range_.substr(itemAt_, at_ - itemAt_);
        std::size_t const bracket = item.find_first_of("[]");
        if (bracket != std::string_view::npos)
            return {PatternFault::MixedBrackets, itemAt_ + bracket, 1};
        if (low_.front() == '!')
            fault = PatternFault::ExclusionOfRange;
        return {fault, itemAt_, item.size()};
    }

    std::optional<Finding> RequirePositiveItem() const {
        if (isPositive_)
            return std::nullopt;
        return Finding{hasItem_ ? PatternFault::NoPositiveItem : PatternFault::UnclosedGroup, 0, 1};
    }

    std::string_view const range_;
    std::size_t at_ = 0;
    std::string low_; // A copy, since a "{" inside a part is left out and does not end it.
    std::string high_;
    std::size_t itemAt_ = 0; // Of the first character of low_.
    std::size_t dashAt_ = 0; // Of the "-" of the item, if hasDash_.
    bool hasDash_ = false;
    bool hasItem_ = false;
    bool isPositive_ = false;
};

} // namespace

std::optional<Finding> CheckRange(std::string_view range) {
    return RangeScan(range).Run();
}

} // namespace CallRecordingUtils
