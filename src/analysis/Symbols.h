// The alphabet of the automata: bytes that no pattern can tell apart are one symbol, and where the
// host and the port of an address begin is a symbol of its own.

#ifndef ANALYSIS_SYMBOLS_H
#define ANALYSIS_SYMBOLS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "common/Bits.h"
#include "language/Characters.h"

namespace CallRecordingUtils {

using Symbol = std::uint8_t;

/// The byte that stands for each symbol when a call is shown, the most usual first. Every literal
/// of the language is a symbol by itself. All others only "?", "*" and the text order of a range
/// of fixed width can meet; that order compares them with digits, so there are two kinds of them:
/// those below "0", which "*" stands for, and those above "9".
inline constexpr std::string_view kTextBytes = "0123456789"
                                               "abcdefghijklmnopqrstuvwxyz"
                                               "ABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                               ".+_#/=~$&'^%*" // Seen in addresses.
                                               ";()@:|";
inline constexpr std::size_t kTextSymbols = kTextBytes.size();

/// The "@" behind the user and the ":" behind the host of an address are not the symbols of these
/// bytes: a user may hold both, and a host a ":", without ending there.
inline constexpr Symbol kHostMark = kTextSymbols;
inline constexpr Symbol kPortMark = kTextSymbols + 1;
inline constexpr std::size_t kSymbols = kTextSymbols + 2;

inline constexpr Symbol kFirstLetter = 10; // Behind the digits.
inline constexpr Symbol kFirstOdd = static_cast<Symbol>(kTextBytes.find(';'));
inline constexpr Symbol kAt = static_cast<Symbol>(kTextBytes.find('@'));
inline constexpr Symbol kColon = static_cast<Symbol>(kTextBytes.find(':'));
inline constexpr Symbol kBelowDigits = static_cast<Symbol>(kTextBytes.find('*'));
inline constexpr Symbol kAboveDigits = static_cast<Symbol>(kTextBytes.find('|'));

constexpr std::array<Symbol, 256> MakeSymbolTable() {
    std::array<Symbol, 256> table{};
    for (std::size_t byte = 0; byte < table.size(); ++byte) {
        char const c = static_cast<char>(byte);
        table[byte] = IsLiteral(c) ? static_cast<Symbol>(kTextBytes.find(c))
                      : byte < '0' ? kBelowDigits
                                   : kAboveDigits;
    }
    return table;
}
inline constexpr std::array<Symbol, 256> kSymbolOf = MakeSymbolTable();

constexpr Symbol SymbolOf(char c) {
    return kSymbolOf[static_cast<unsigned char>(c)];
}
/// What the symbol compares as: a mark as the character that it is in the text of an address.
constexpr Symbol TextSymbolOf(Symbol symbol) {
    return symbol == kHostMark ? kAt : symbol == kPortMark ? kColon : symbol;
}
constexpr char ByteOf(Symbol symbol) {
    return kTextBytes[TextSymbolOf(symbol)];
}

/// A text of symbols, marks among them.
using SymbolText = std::basic_string<Symbol>;

/// How unwelcome a symbol is in a call that is shown to a person: of two calls the cheaper one is
/// shown. A digit is better than a letter, and ten digits are better than a punctuation character.
using Cost = std::uint32_t;
inline constexpr Cost kDigitCost = 10;
inline constexpr Cost kLetterCost = 11;
inline constexpr Cost kPunctuationCost = 100;
inline constexpr Cost kEmptyCost = 20000; // A number, user or host without any character.
inline constexpr Cost kOddCost = 100000;

constexpr Cost CostOf(Symbol symbol) {
    return symbol >= kTextSymbols     ? 0
           : symbol < kFirstLetter    ? kDigitCost
           : IsLetter(ByteOf(symbol)) ? kLetterCost
           : symbol < kFirstOdd       ? kPunctuationCost
                                      : kOddCost;
}

/// A set of symbols.
class SymbolSet {
  public:
    static SymbolSet Of(Symbol symbol) {
        SymbolSet set;
        set.Add(symbol);
        return set;
    }
    void Add(Symbol symbol) { words_[symbol / kWordBits] |= Word{1} << symbol % kWordBits; }
    bool Has(Symbol symbol) const {
        return (words_[symbol / kWordBits] >> symbol % kWordBits & 1) != 0;
    }
    /// How many symbols before this one are in the set.
    std::size_t CountBelow(Symbol symbol) const {
        Word const below = (Word{1} << symbol % kWordBits) - 1;
        return symbol < kWordBits ? CountBits(words_[0] & below)
                                  : CountBits(words_[0]) + CountBits(words_[1] & below);
    }
    /// Calls visit with each symbol of the set, ascending.
    template <typename Visit>
    void ForEach(Visit const& visit) const {
        for (std::size_t i = 0; i < words_.size(); ++i)
            for (Word left = words_[i]; left != 0; left &= left - 1)
                visit(static_cast<Symbol>(i * kWordBits + LowestBit(left)));
    }
    SymbolSet& operator|=(SymbolSet const& other) {
        words_[0] |= other.words_[0];
        words_[1] |= other.words_[1];
        return *this;
    }
    SymbolSet& operator&=(SymbolSet const& other) {
        words_[0] &= other.words_[0];
        words_[1] &= other.words_[1];
        return *this;
    }
    bool IsEmpty() const { return (words_[0] | words_[1]) == 0; }
    std::size_t Count() const { return CountBits(words_[0]) + CountBits(words_[1]); }
    bool operator==(SymbolSet const& other) const { return words_ == other.words_; }

  private:
    std::array<Word, 2> words_{0, 0};
};

} // namespace CallRecordingUtils

#endif
