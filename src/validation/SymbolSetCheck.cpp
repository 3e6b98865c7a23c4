// Goes through the items of a symbol set.

#include "validation/SymbolSetCheck.h"

#include <algorithm>
#include <array>

#include "language/Characters.h"

namespace CallRecordingUtils {
namespace {

class SymbolSetCheck {
  public:
    explicit SymbolSetCheck(std::string_view set) : set_(set) {}

    std::optional<Finding> Run() {
        while (itemAt_ < set_.size()) {
            std::size_t const end = std::min(set_.find(',', itemAt_), set_.size() - 1);
            item_ = set_.substr(itemAt_, end - itemAt_);
            if (auto finding = CheckItem())
                return finding;
            itemAt_ = end + 1;
        }
        if (!isPositive_)
            return Finding{PatternFault::NoPositiveItem, 0, 1};
        return std::nullopt;
    }

  private:
    std::optional<Finding> CheckItem() {
        bool const isRange = item_.size() == 3 && item_[1] == '-';
        bool const isExclusion = item_.size() == 2 && item_[0] == '!';
        if (isExclusion) // Of whatever character.
            return std::nullopt;
        isPositive_ = true;
        if (isRange)
            return CheckSymbolRange();
        return item_.size() == 1 ? CheckSymbol() : WrongItem();
    }

    std::optional<Finding> CheckSymbol() {
        char const symbol = item_[0];
        if (symbol == '?')
            return std::nullopt;
        return IsLiteral(symbol) ? GiveOnce(symbol) : WrongItem();
    }

    std::optional<Finding> CheckSymbolRange() {
        char const first = item_[0];
        char const last = item_[2];
        if (KindOf(first) == SymbolKind::Other || KindOf(first) != KindOf(last))
            return WrongItem();
        if (first >= last)
            return About(PatternFault::DescendingRange);
        for (char symbol = first; symbol <= last; ++symbol)
            if (auto finding = GiveOnce(symbol))
                return finding;
        return std::nullopt;
    }

    std::optional<Finding> GiveOnce(char symbol) {
        bool& isGiven = isGiven_[static_cast<unsigned char>(symbol)];
        if (isGiven)
            return Finding{PatternFault::RepeatedSymbol, itemAt_, item_.size(), symbol};
        isGiven = true;
        return std::nullopt;
    }

    /// Returns what the user should look at in an item that is not a symbol, range or exclusion.
    Finding WrongItem() const {
        std::size_t const brace = item_.find_first_of("{}");
        if (brace != std::string_view::npos)
            return {PatternFault::MixedBrackets, itemAt_ + brace, 1};
        std::size_t const mark = item_.find('!');
        if (mark == 0 && item_.size() == 1)
            return {PatternFault::EmptyExclusion, itemAt_, 1};
        if (mark != 0 && mark != std::string_view::npos)
            return {PatternFault::MisplacedExclusion, itemAt_ + mark, 1};
        if (std::count(item_.begin(), item_.end(), '-') > 1)
            return {PatternFault::RepeatedDash, itemAt_ + item_.find('-', item_.find('-') + 1), 1};
        bool const isRange = item_.size() == 3 && item_[1] == '-' && mark != 0;
        return About(isRange ? PatternFault::MixedRange : PatternFault::LongSetItem);
    }

    Finding About(PatternFault fault) const { return {fault, itemAt_, item_.size()}; }

    std::string_view const set_;
    std::string_view item_;
    std::size_t itemAt_ = 1; // After the "[".
    std::array<bool, 256> isGiven_{};
    bool isPositive_ = false;
};

} // namespace

std::optional<Finding> CheckSymbolSet(std::string_view set) {
    return SymbolSetCheck(set).Run();
}

} // namespace CallRecordingUtils
