// Walks over the items of a group and consumes the candidate as they say.

#include "matching/ItemList.h"

#include <algorithm>
#include <optional>
#include <string>

#include "common/DecimalNumber.h"
#include "language/Items.h"

namespace CallRecordingUtils {
namespace {

/// REQUIRES: neither text is empty. (The first character alone gives most answers.)
bool StartsWith(std::string_view text, std::string_view start) {
    return text.front() == start.front() && text.substr(0, start.size()) == start;
}

/// The low or high part of a range, joined from the runs of its item. Only odd items such as a-bc
/// have more than one run for a part; a single run is borrowed and never copied.
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
    std::string_view text_; // Borrowed from the list, or from joined_.
    std::optional<std::string> joined_;
};

/// Returns whether candidate is a number from low to high. With a low part such as 00, texts of
/// that width are compared instead.
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

/// One walk over the parts of an item list with one candidate. The Take methods, one for each kind
/// of part, return true when the candidate is accepted.
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

    // The end of an only item is not searched for: the value of an exclusion can hold any number of
    // "!", and each would search to the end of the list again.
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
        return EndIfUsedUp(true); // A candidate that ends before a "-" is the low end of a range.
    }

    /// An item accepts the candidate when both end together. One that goes on when the candidate is
    /// used up fails.
    bool EndIfUsedUp(bool mayEndBeforeDash) {
        if (!remaining_.empty())
            return false;
        if (at_ == list_.size())
            return true;
        ItemPart const next = ReadPart(list_, at_).kind;
        bool const isDash =
            next == ItemPart::ToLetter || next == ItemPart::ToDigits || next == ItemPart::StrayDash;
        if (next == ItemPart::Separator || (mayEndBeforeDash && isDash))
            return true;
        FailItem();
        return false;
    }

    bool TakeLetterRange(char high) {
        if (candidate_.size() != 1 || !IsLetter(candidate_.front()) || low_.Text().empty())
            return false;
        char const letter =
            candidate_.front(); // ASCII, like low: whether char is signed is no matter.
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
    std::string_view remaining_; // Never empty when a part is taken: an item ends when it is.
    std::size_t at_ = 0;
    RangePart low_;
    RangePart high_;
    Consumed consumed_;
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
        SymbolAnswer const answer = AskSymbolItems(list, 0, candidate.front());
        if (answer.end == list.size()) {
            consumed = {answer.admit ? 1U : 0U, 0};
            return answer.admit;
        }
    }
    return AcceptsCandidate(list, candidate, consumed) && !ExcludesCandidate(list, candidate);
}

Lengths CandidateLengths(std::string_view list) {
    Lengths all{std::string_view::npos, 1};
    for (ItemReader item(list); item.Next();) {
        Lengths const one = item.AcceptedLengths();
        all = {std::min(all.shortest, one.shortest), std::max(all.longest, one.longest)};
    }
    return {std::min(all.shortest, all.longest), all.longest};
}

} // namespace CallRecordingUtils
