// Words every kind of rejection: first what is wrong, then what to change.

#include "validation/RejectionMessage.h"

#include <algorithm>
#include <cstddef>
#include <string>

#include "language/Characters.h"
#include "language/Forms.h"
#include "validation/ForeignCharacter.h"
#include "validation/Sentence.h"

namespace CallRecordingUtils {
namespace {

/// The part of a text that a message is about, as the user wrote it.
class Culprit {
  public:
    Culprit(std::string_view written, std::size_t begin, std::size_t end)
        : written_(written), begin_(begin), end_(end) {}

    std::string_view Text() const { return written_.substr(begin_, end_ - begin_); }
    std::string_view TextAndRest() const { return written_.substr(begin_); }
    bool Is(std::string_view text) const { return Text() == text; }
    char First() const { return begin_ == end_ ? '\0' : written_[begin_]; }
    char Last() const { return begin_ == end_ ? '\0' : written_[end_ - 1]; }
    char Before() const { return begin_ == 0 ? '\0' : written_[begin_ - 1]; }

  private:
    std::string_view const written_;
    std::size_t const begin_;
    std::size_t const end_;
};

// In the sentences, $q is the culprit in quotes; $e is the escape that the culprit is stored by or
// stores, and $c the code of that escape in quotes; $s is the repeated symbol in quotes; and $w is
// this clause. An address is compared with the code of an escape, so an escape helps only if the
// telephone system uses that code for the character.
constexpr std::string_view kWaysToWrite =
    "? for a $q in the address ($e where the telephone system hands over $c for it)";

char const* DescribeReserved(Culprit const& culprit) {
    if (culprit.Is("#"))
        return "$q is reserved for the stored form: write $e, which matches a $q (\\*72 is what "
               "matches a dialled #72)";
    if (culprit.Is("@") || culprit.Is(":"))
        return "$q is reserved for the stored form: write $e, which matches a $q (the parts of a "
               "SIP address are checked one by one)";
    return "$q is reserved for the stored form: write $e, which matches a $q";
}

char const* DescribeInvalid(Culprit const& culprit) {
    bool const isRange =
        culprit.Is("<") && culprit.TextAndRest().find('>') != std::string_view::npos;
    return isRange ? "$q cannot be in a pattern: write a range expression in braces, as in {1-5}"
                   : "$q cannot be in a pattern: remove it, or write ? where the address has one";
}

char const* DescribeUnclosed(Culprit const& culprit) {
    if (culprit.Is("["))
        return "this $q is never closed: put \"]\" after its last item";
    if (culprit.Is("{"))
        return "this $q is never closed: put \"}\" after its last item";
    return "a range expression begins with \"{\" and ends with \"}\": add these";
}

char const* DescribeUnopened(Culprit const& culprit) {
    return culprit.Is("]")
               ? "this $q closes nothing: remove it, or put \"[\" before the first item"
               : "this $q closes nothing: remove it, or put \"{\" before the first item";
}

char const* DescribeSeparator(Culprit const& culprit) {
    return culprit.Is("-") ? "$q belongs inside [ ] or { }: write a range as in {1-5}, or $w"
                           : "$q belongs inside [ ] or { }: write a list as in [1,2], or $w";
}

char const* DescribeRepeatedDash(Culprit const& culprit) {
    return culprit.Before() == '-'
               ? "one \"-\" is enough: remove this one"
               : "a range has only one \"-\": write \",\" instead of this second one";
}

char const* DescribeWrongClosing(Culprit const& culprit) {
    return culprit.Is("]") ? "\"{\" and \"]\" are not a pair: write \"}\" here, or \"[\" there"
                           : "\"[\" and \"}\" are not a pair: write \"]\" here, or \"{\" there";
}

char const* DescribeMisplacedExclusion(Culprit const& culprit) {
    return culprit.Before() == '-' ? "\"!\" cannot be inside a range: remove it, and exclude a "
                                     "value in an item of its own, as in {1-9,!5}"
                                   : "\"!\" must follow \"[\", \"{\" or \",\": put one of these "
                                     "before it, or remove it";
}

char const* DescribeLongSetItem(Culprit const& culprit) {
    if (culprit.First() == '!')
        return "$q excludes more than one symbol: in a set write each by itself, as in !2,!3";
    if (culprit.Text().find("..") != std::string_view::npos)
        return "$q is not a range: write it with \"-\", as in [0-9] or {10-20}";
    return "$q is longer than one symbol: separate symbols by \",\", or use braces for numbers, as "
           "in {10-20}";
}

char const* DescribeMixedBrackets(Culprit const& culprit) {
    bool const isInSet = culprit.Is("{") || culprit.Is("}");
    return isInSet ? "$q cannot be inside [ ]: close those brackets before it, or remove it"
                   : "$q cannot be inside { }: close those brackets before it, or remove it";
}

char const* DescribeDescending(Culprit const& culprit) {
    SymbolKind const kind = KindOf(culprit.First());
    if (kind == SymbolKind::Digit)
        return "$q does not run upwards: the first number must be smaller than the second";
    if (culprit.Text().size() > 3)
        return "$q does not run upwards: only the first letter of each end counts, and the low one "
               "must come first";
    if (kind != KindOf(culprit.Last()))
        return "$q does not run upwards: the first letter must come before the second (capital "
               "letters come before small ones)";
    return "$q does not run upwards: the first letter must come before the second";
}

char const* DescribeRepeated(Culprit const& culprit) {
    bool const isRange = culprit.Text().size() == 3;
    return isRange ? "$s is given twice in this set: $q repeats it, so change the range or what is "
                     "before it"
                   : "$q is given twice in this set: remove one of the two";
}

// NOLINTNEXTLINE(readability-function-size): a table of sentences, one line each.
char const* Describe(PatternFault fault, Culprit const& culprit) {
    switch (fault) {
    case PatternFault::ReservedCharacter: return DescribeReserved(culprit);
    case PatternFault::StrayBackslash:
        return "only * ? , - and ! can follow a backslash: remove it, or add one of these";
    case PatternFault::ExclusionOutsideGroup:
        return "$q excludes an item: put it inside [ ] or { }, as in [0-9,!5], or write $w";
    case PatternFault::InvalidCharacter: return DescribeInvalid(culprit);
    case PatternFault::NestedGroup:
        return "this $q is inside brackets that are still open: close them before it, or remove it";
    case PatternFault::UnclosedGroup: return DescribeUnclosed(culprit);
    case PatternFault::UnopenedGroup: return DescribeUnopened(culprit);
    case PatternFault::EmptyGroup:
        return "there is nothing between the brackets: add an item, or remove them";
    case PatternFault::EmptyItem:
        return "an item is missing next to this \",\": add it, or remove the \",\"";
    case PatternFault::IncompleteRange:
        return "a range needs a value on both sides of \"-\": add it, or remove the \"-\"";
    case PatternFault::RepeatedDash: return DescribeRepeatedDash(culprit);
    case PatternFault::RepeatedStar:
        return "one \"*\" already matches any run of characters: remove this one";
    case PatternFault::StarInGroup: return "$q cannot be inside [ ] or { }: remove it, or write $w";
    case PatternFault::SeparatorOutsideGroup: return DescribeSeparator(culprit);
    case PatternFault::LongSetItem: return DescribeLongSetItem(culprit);
    case PatternFault::MixedBrackets: return DescribeMixedBrackets(culprit);
    case PatternFault::EmptyExclusion:
        return "\"!\" excludes nothing here: put a value after it, as in !5, or remove it";
    case PatternFault::MisplacedExclusion: return DescribeMisplacedExclusion(culprit);
    case PatternFault::ExclusionOfRange:
        return "\"!\" takes one value and not a range: exclude the values one by one, as in !1,!2";
    case PatternFault::MixedRange:
        return "the ends of $q are of different kinds: use two numbers, two capital or two small "
               "letters";
    case PatternFault::DescendingRange: return DescribeDescending(culprit);
    case PatternFault::UnequalWidth:
        return "$q has a leading zero: give both ends the same number of digits, as in 01-10";
    case PatternFault::RepeatedSymbol: return DescribeRepeated(culprit);
    case PatternFault::NoPositiveItem:
        return culprit.Is("[")
                   ? "these brackets only exclude: add what they are to match, as in [0-9,!5]"
                   : "these brackets only exclude: add what they are to match, as in {10-99,!50}";
    case PatternFault::WrongClosing: return DescribeWrongClosing(culprit);
    case PatternFault::NumberTooLarge:
        return "$q is beyond 2147483647 (numbers have 32 bits): write the leading digits before "
               "the range, as in 4930{0000-9999}";
    }
    return "";
}

/// Fills in a sentence.
class Filling {
  public:
    Filling(Culprit const& culprit, char symbol) : culprit_(culprit), symbol_(symbol) {}

    std::string Fill(std::string_view sentence) const {
        std::string filled;
        while (!sentence.empty()) {
            std::size_t const place = std::min(sentence.find('$'), sentence.size());
            filled += sentence.substr(0, place);
            if (place < sentence.size())
                filled += Replacement(sentence[place + 1]);
            sentence.remove_prefix(std::min(place + 2, sentence.size()));
        }
        return filled;
    }

  private:
    std::string Replacement(char letter) const {
        switch (letter) {
        case 'q': return Quoted(culprit_.Text());
        case 's': return Quoted({&symbol_, 1});
        case 'w': return Fill(kWaysToWrite);
        case 'e': return {'\\', kEscapedCharacters[EscapeRow()]};
        default: return Quoted(kEscapeCodes.substr(EscapeRow(), 1));
        }
    }

    /// The row of the escape in kEscapeCodes and kEscapedCharacters.
    std::size_t EscapeRow() const {
        std::size_t const row = kEscapeCodes.find(culprit_.First());
        return row != std::string_view::npos ? row : kEscapedCharacters.find(culprit_.First());
    }

    Culprit const& culprit_;
    char const symbol_;
};

} // namespace

PatternRejection Reject(Finding const& finding, std::string_view written, std::string_view stored) {
    std::size_t const begin = PositionAsWritten(written, stored, finding.position);
    std::size_t const end = PositionAsWritten(written, stored, finding.position + finding.length);
    Culprit const culprit(written, begin, end);
    bool const isForeign = finding.fault == PatternFault::InvalidCharacter &&
                           static_cast<unsigned char>(culprit.First()) >= 0x80;
    return {finding.fault, begin,
            isForeign ? DescribeForeignCharacter(culprit.TextAndRest())
                      : Filling(culprit, finding.symbol).Fill(Describe(finding.fault, culprit))};
}

} // namespace CallRecordingUtils
