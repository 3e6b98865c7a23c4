// The items of a group: one walk over the list, consuming the candidate as the items say.

#include "matching/ItemList.h"

#include <algorithm>
#include <optional>
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
        if (!joined_)
            joined_.emplace();
        if (text_.data() != joined_->data())
            *joined_ = text_;
        text_ = joined_->append(run);
    }

    std::string_view Text() const { return text_; }

  private:
    std::string_view text_;             // Into the list, or into joined_.
    std::optional<std::string> joined_; // Short ones allocate nothing.
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

/// One walk over the parts of an item list with one candidate, one method for each kind of part.
/// The methods return true when the candidate is accepted.
class ItemWalk {
  public:
    enum Extent { kManyItems, kOneItem };

    ItemWalk(std::string_view list, std::string_view candidate, Extent extent)
        : list_(list), candidate_(candidate), extent_(extent), remaining_(candidate) {}

    bool Run() {
        if (candidate_.empty())
            return false;
        while (at_ < list_.size())
            if (Take(ReadPart(list_, at_)))
                return true;
        consumed_ = {};
        return false;
    }

    Consumed const& GetConsumed() const { return consumed_; }

  private:
    bool Take(Part const& part) {
        at_ = part.end;
        switch (part.kind) {
        case ItemPart::Separator: StartItem(); return false;
        case ItemPart::Exclusion: SkipItem(); return false;
        case ItemPart::AnyOne: return TakeAnyOne();
        case ItemPart::Literals: return TakeLiterals(part.text);
        case ItemPart::ToLetter: return TakeLetterRange(part.text.front());
        case ItemPart::ToDigits: return TakeNumberRange(part.text);
        case ItemPart::StrayDash: return false;
        case ItemPart::Foreign: FailItem(); return false;
        }
        return false;
    }

    void StartItem() {
        remaining_ = candidate_;
        low_.Clear();
        high_.Clear();
    }

    // Where there is one item only, its end is not searched for: an exclusion value can hold any
    // number of "!".
    void SkipItem() { at_ = extent_ == kOneItem ? list_.size() : EndOfItem(list_, at_); }

    void FailItem() {
        consumed_ = {};
        SkipItem();
    }

    bool TakeAnyOne() {
        low_.Clear();
        ++consumed_.questions;
        remaining_.remove_prefix(1);
        return EndIfUsedUp(false);
    }

    bool TakeLiterals(std::string_view run) {
        low_.Append(run);
        if (!StartsWith(remaining_, low_.Text())) {
            while (at_ < list_.size() && ReadPart(list_, at_).kind == ItemPart::AnyOne)
                ++at_;
            return false;
        }
        remaining_.remove_prefix(low_.Text().size());
        consumed_.symbols += static_cast<std::uint32_t>(low_.Text().size());
        return EndIfUsedUp(true); // Before a "-" the candidate is the low end of a range.
    }

    /// Once the candidate is used up, its item accepts it if it ends here as well.
    bool EndIfUsedUp(bool endsBeforeDash) {
        if (!remaining_.empty())
            return false;
        if (at_ == list_.size())
            return true;
        ItemPart const next = ReadPart(list_, at_).kind;
        bool const isDash =
            next == ItemPart::ToLetter || next == ItemPart::ToDigits || next == ItemPart::StrayDash;
        if (next == ItemPart::Separator || (endsBeforeDash && isDash))
            return true;
        FailItem();
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

    bool TakeNumberRange(std::string_view run) {
        high_.Append(run);
        if (!IsInNumberRange(candidate_, low_.Text(), high_.Text()))
            return false;
        consumed_.symbols += static_cast<std::uint32_t>(remaining_.size());
        return true;
    }

    std::string_view const list_;
    std::string_view const candidate_;
    Extent const extent_;
    std::string_view remaining_; // Never empty before a part is taken: an item ends when it is.
    std::size_t at_ = 0;
    RangePart low_;
    RangePart high_;
    Consumed consumed_;
};

/// The lengths of the candidates that one item can accept, found part by part.
///
/// An item accepts what its runs and "?" consume in turn, a single letter, or a number no longer
/// than the high part. A run consumes the whole low part gathered since the last "?", so in an odd
/// item (ab-cd consumes ab, then abcd) the length can exceed the item's own; hence the sums. The
/// shortest is told for values and for ranges of numbers, which people write; for others it is 1.
class ItemLengths {
  public:
    void Add(Part const& part) {
        switch (part.kind) {
        case ItemPart::AnyOne:
            low_ = 0;
            ++consumable_;
            isOdd_ = isOdd_ || high_ > 0;
            break;
        case ItemPart::Literals:
            consumable_ += low_ += part.text.size();
            isOdd_ = isOdd_ || high_ > 0;
            break;
        case ItemPart::ToDigits:
            isOdd_ = isOdd_ || parts_ != 1 || low_ == 0;
            high_ += part.text.size();
            break;
        default: isOdd_ = true;
        }
        ++parts_;
    }

    bool IsEmpty() const { return parts_ == 0; }
    std::size_t Shortest() const { return isOdd_ ? 1 : consumable_; }
    std::size_t Longest() const { return std::max({std::size_t{1}, consumable_, high_}); }

  private:
    std::size_t parts_ = 0;
    std::size_t low_ = 0;
    std::size_t high_ = 0;
    std::size_t consumable_ = 0;
    bool isOdd_ = false; // Neither a value nor a range of numbers.
};

} // namespace

bool AcceptsCandidate(std::string_view list, std::string_view candidate, Consumed& consumed) {
    ItemWalk walk(list, candidate, ItemWalk::kManyItems);
    bool const accepted = walk.Run();
    consumed = walk.GetConsumed();
    return accepted;
}

bool ExcludesCandidate(std::string_view list, std::string_view candidate) {
    ExclusionReader exclusions(list);
    while (exclusions.Next())
        if (ItemWalk(exclusions.Value(), candidate, ItemWalk::kOneItem).Run())
            return true;
    return false;
}

bool AdmitsCandidate(std::string_view list, std::string_view candidate, Consumed& consumed) {
    if (candidate.size() == 1) {
        SymbolItems const symbols = ReadSymbolItems(list, 0, candidate.front());
        if (symbols.end == list.size()) {
            consumed = {symbols.admit ? 1U : 0U, 0};
            return symbols.admit;
        }
    }
    return AcceptsCandidate(list, candidate, consumed) && !ExcludesCandidate(list, candidate);
}

Lengths CandidateLengths(std::string_view list) {
    Lengths lengths{std::string_view::npos, 1};
    ItemLengths item;
    auto const endItem = [&] {
        if (!item.IsEmpty())
            lengths = {std::min(lengths.shortest, item.Shortest()),
                       std::max(lengths.longest, item.Longest())};
        item = {};
    };
    for (std::size_t at = 0; at < list.size();) {
        Part const part = ReadPart(list, at);
        at = part.kind == ItemPart::Exclusion ? EndOfItem(list, part.end) : part.end;
        if (part.kind == ItemPart::Separator)
            endItem();
        else if (part.kind != ItemPart::Exclusion)
            item.Add(part);
    }
    endItem();
    return {std::min(lengths.shortest, lengths.longest), lengths.longest};
}

} // namespace CallRecordingUtils
