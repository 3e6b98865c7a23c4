// Groups of symbols that an automaton treats alike.

#ifndef ANALYSIS_SYMBOLCLASSES_H
#define ANALYSIS_SYMBOLCLASSES_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "analysis/Symbols.h"

namespace CallRecordingUtils {

/// Divides the symbols into classes, numbered in the order of their first symbols. Most automata
/// tell few symbols apart, so a row with one entry for each class is a tenth of a whole one.
class SymbolClasses {
  public:
    std::size_t Count() const { return count_; }
    std::size_t Of(Symbol symbol) const { return classOf_[symbol]; }
    /// The first symbol of a class.
    Symbol FirstOf(std::size_t number) const { return first_[number]; }

    /// Puts symbols into different classes where set holds one of them only.
    void Divide(SymbolSet const& set) {
        DivideBy(
            2, [&set](Symbol symbol) { return set.Has(symbol) ? std::size_t{1} : 0; });
    }
    /// Puts symbols into different classes where other does.
    void Divide(SymbolClasses const& other) {
        DivideBy(
            other.Count(), [&other](Symbol symbol) { return other.Of(symbol); });
    }

  private:
    static constexpr std::uint8_t kNew = 255;

    template <typename ValueOf>
    void DivideBy(std::size_t values, ValueOf const& valueOf) {
        std::array<std::uint8_t, kSymbols * kSymbols> numbers; // By the old class and the value.
        std::fill_n(numbers.begin(), count_ * values, kNew);
        count_ = 0;
        for (std::size_t i = 0; i < kSymbols; ++i) {
            auto const symbol = static_cast<Symbol>(i);
            std::uint8_t& number = numbers[classOf_[symbol] * values + valueOf(symbol)];
            if (number == kNew) {
                number = static_cast<std::uint8_t>(count_);
                first_[count_++] = symbol;
            }
            classOf_[symbol] = number;
        }
    }

    std::array<std::uint8_t, kSymbols> classOf_{};
    std::array<Symbol, kSymbols> first_{};
    std::size_t count_ = 1;
};

} // namespace CallRecordingUtils

#endif
