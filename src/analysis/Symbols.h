// The alphabet of the automata: bytes that no pattern can tell apart are one symbol.

#ifndef ANALYSIS_SYMBOLS_H
#define ANALYSIS_SYMBOLS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "language/Characters.h"

namespace CallRecordingUtils {

using Symbol = std::uint8_t;

/// The byte that stands for each symbol when a call is shown, the most usual first. Every literal
/// of the language is a symbol by itself. All others only "?", "*" and the text order of a range
/// of fixed width can meet; that order compares them with digits, so there are two kinds of them:
/// those below "0", which "*" stands for, and those above "9".
inline constexpr std::string_view kSymbolBytes = "0123456789"
                                                 "abcdefghijklmnopqrstuvwxyz"
                                                 "ABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                                 ".+_#/=~$&'^%*" // Seen in addresses.
                                                 ";()@:|";
inline constexpr std::size_t kSymbols = kSymbolBytes.size();
inline constexpr Symbol kFirstOdd = static_cast<Symbol>(kSymbolBytes.find(';'));
inline constexpr Symbol kAt = static_cast<Symbol>(kSymbolBytes.find('@'));
inline constexpr Symbol kColon = static_cast<Symbol>(kSymbolBytes.find(':'));
inline constexpr Symbol kBelowDigits = static_cast<Symbol>(kSymbolBytes.find('*'));
inline constexpr Symbol kAboveDigits = static_cast<Symbol>(kSymbolBytes.find('|'));

constexpr std::array<Symbol, 256> MakeSymbolTable() {
    std::array<Symbol, 256> table{};
    for (std::size_t byte = 0; byte < table.size(); ++byte) {
        char const c = static_cast<char>(byte);
        table[byte] = IsLiteral(c) ? static_cast<Symbol>(kSymbolBytes.find(c))
                      : byte < '0' ? kBelowDigits
                                   : kAboveDigits;
    }
    return table;
}
inline constexpr std::array<Symbol, 256> kSymbolOf = MakeSymbolTable();

constexpr Symbol SymbolOf(char c) {
    return kSymbolOf[static_cast<unsigned char>(c)];
}
constexpr char ByteOf(Symbol symbol) {
    return kSymbolBytes[symbol];
}

/// How unwelcome a symbol is in a call that is shown to a person: of two calls the cheaper one is
/// shown. A digit is better than a letter, and ten digits are better than a mark.
using Cost = std::uint32_t;
inline constexpr Cost kDigitCost = 10;
inline constexpr Cost kLetterCost = 11;
inline constexpr Cost kMarkCost = 100;
inline constexpr Cost kEmptyCost = 20000; // A number, user or host without any character.
inline constexpr Cost kOddCost = 100000;

constexpr Cost CostOf(Symbol symbol) {
    return symbol < 10                ? kDigitCost
           : IsLetter(ByteOf(symbol)) ? kLetterCost
           : symbol < kFirstOdd       ? kMarkCost
                                      : kOddCost;
}

/// A set of symbols.
class SymbolSet {
  public:
    void Add(Symbol symbol) { words_[symbol / 64] |= std::uint64_t{1} << symbol % 64; }
    bool Has(Symbol symbol) const { return (words_[symbol / 64] >> symbol % 64 & 1) != 0; }
    SymbolSet& operator|=(SymbolSet const& other) {
        words_[0] |= other.words_[0];
        words_[1] |= other.words_[1];
        return *this;
    }

  private:
    std::uint64_t words_[2] = {0, 0};
};

} // namespace CallRecordingUtils

#endif
