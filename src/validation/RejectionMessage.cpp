// Words every kind of rejection: what is wrong, then what to change.

#include "validation/RejectionMessage.h"

#include "language/Characters.h"
#include "language/Forms.h"
#include "validation/ForeignCharacter.h"
#include "validation/Quoted.h"

namespace CallRecordingUtils {
namespace {

/// The part of a text that a sentence is about, as the user wrote it.
class Culprit {
  public:
    Culprit(std::string_view written, std::size_t begin, std::size_t end)
        : written_(written), begin_(begin), end_(end) {}

    std::string_view Text() const { return written_.substr(begin_, end_ - begin_); }
    std::string_view TextAndRest() const { return written_.substr(begin_); }
    char Before() const { return begin_ == 0 ? '\0' : written_[begin_ - 1]; }

  private:
    std::string_view const written_;
    std::size_t const begin_;
    std::size_t const end_;
};

std::string Escape(char c) {
    return std::string("\\") + c;
}

/// What to write for a character that the language uses itself. Its escape is compared as the code
/// that stores it, and so helps only where the telephone system hands over that code.
std::string WaysToWrite(char c) {
    char const code = kEscapeCodes[kEscapedCharacters.find(c)];
    return "? for a " + Quoted({&c, 1}) + " in the address (" + Escape(c) +
           " where the telephone system hands over " + Quoted({&code, 1}) + " for it)";
}

std::string DescribeReserved(std::string_view culprit) {
    std::string const escape = Escape(EscapedCharacter(culprit.front()));
    bool const isOfSipAddress = culprit == "@" || culprit == ":";
    return Quoted(culprit) + " is reserved for the stored form: write " + escape +
           ", which matches a " + Quoted(culprit) +
           (culprit == "#"   ? " (\\*72 is what matches a dialled #72)"
            : isOfSipAddress ? " (the parts of a SIP address are checked one by one)"
                             : "");
}

std::string DescribeInvalid(Culprit const& culprit) {
    std::string_view const character = culprit.Text();
    if (static_cast<unsigned char>(character.front()) >= 0x80)
        return DescribeForeignCharacter(culprit.TextAndRest());
    bool const isRange =
        character == "<" && culprit.TextAndRest().find('>') != std::string_view::npos;
    return Quoted(character) + " cannot stand in a pattern: " +
           (isRange ? "write a range expression in braces, as in {1-5}"
                    : "remove it, or write ? where the address holds one");
}

std::string DescribeUnclosed(std::string_view culprit) {
    if (culprit != "[" && culprit != "{")
        return "a range expression begins with \"{\" and ends with \"}\": add these";
    return "this " + Quoted(culprit) + " is never closed: put " +
           (culprit == "[" ? "\"]\"" : "\"}\"") + " after its last item";
}

std::string DescribeUnopened(std::string_view culprit) {
    return "this " + Quoted(culprit) + " closes nothing: remove it, or put " +
           (culprit == "]" ? "\"[\"" : "\"{\"") + " before the first item";
}

std::string DescribeSeparator(std::string_view culprit) {
    return Quoted(culprit) + " belongs inside [ ] or { }: write " +
           (culprit == "-" ? "a range as in {1-5}" : "a list as in [1,2]") + ", or " +
           WaysToWrite(culprit.front());
}

std::string DescribeRepeatedDash(Culprit const& culprit) {
    if (culprit.Before() == '-')
        return "one \"-\" is enough: remove this one";
    return "a range has one \"-\" only: write \",\" instead of this second one";
}

std::string DescribeWrongClosing(std::string_view closing) {
    return closing == "]" ? "\"{\" and \"]\" are no pair: write \"}\" here, or \"[\" there"
                          : "\"[\" and \"}\" are no pair: write \"]\" here, or \"{\" there";
}

std::string DescribeMisplacedExclusion(Culprit const& culprit) {
    if (culprit.Before() == '-')
        return "\"!\" cannot stand inside a range: remove it, and exclude a value in an item of "
               "its "
               "own, as in {1-9,!5}";
    return "\"!\" must follow \"[\", \"{\" or \",\": put one of these before it, or remove it";
}

std::string DescribeLongSetItem(std::string_view culprit) {
    if (culprit.substr(0, 1) == "!")
        return Quoted(culprit) +
               " excludes more than one symbol: in a set write each by itself, as in !2,!3";
    if (culprit.find("..") != std::string_view::npos)
        return Quoted(culprit) + " is no range: write it with \"-\", as in [0-9] or {10-20}";
    return Quoted(culprit) +
           " is longer than one symbol: separate symbols by \",\", or use braces for "
           "numbers, as in {10-20}";
}

std::string DescribeMixedBrackets(std::string_view culprit) {
    bool const isInSet = culprit == "{" || culprit == "}";
    return Quoted(culprit) + " cannot stand inside " + (isInSet ? "[ ]" : "{ }") +
           ": close those brackets before it, or remove it";
}

std::string DescribeDescending(std::string_view culprit) {
    std::string const range = Quoted(culprit) + " does not run upwards: ";
    SymbolKind const kind = KindOf(culprit.front());
    if (kind == SymbolKind::Digit)
        return range + "the first number must be smaller than the second";
    if (culprit.size() > 3)
        return range + "only the first letter of each end counts, and the low one must come first";
    return range + "the first letter must come before the second" +
           (kind == KindOf(culprit.back()) ? "" : " (capital letters come before small ones)");
}

std::string DescribeTooLarge(std::string_view culprit) {
    return Quoted(culprit) + " is beyond 2147483647 (numbers have 32 bits): write the leading "
                             "digits before the range, as in "
                             "4930{0000-9999}";
}

std::string DescribeRepeated(std::string_view culprit, char symbol) {
    bool const isRange = culprit.size() == 3;
    if (isRange)
        return Quoted({&symbol, 1}) + " is given twice in this set: " + Quoted(culprit) +
               " repeats it, so change the range or what stands before";
    return Quoted(culprit) + " is given twice in this set: remove it here or before";
}

// NOLINTNEXTLINE(readability-function-size): a table of sentences, one line each.
std::string Describe(PatternFault fault, Culprit const& place, char symbol) {
    std::string_view const culprit = place.Text();
    switch (fault) {
    case PatternFault::ReservedCharacter: return DescribeReserved(culprit);
    case PatternFault::StrayBackslash:
        return "only * ? , - and ! can follow a backslash: remove it, or add one of these";
    case PatternFault::ExclusionOutsideGroup:
        return "\"!\" excludes an item: put it inside [ ] or { }, as in [0-9,!5], or write " +
               WaysToWrite('!');
    case PatternFault::InvalidCharacter: return DescribeInvalid(place);
    case PatternFault::NestedGroup:
        return "this " + Quoted(culprit) +
               " stands inside brackets that are still open: close them "
               "before it, or remove it";
    case PatternFault::UnclosedGroup: return DescribeUnclosed(culprit);
    case PatternFault::UnopenedGroup: return DescribeUnopened(culprit);
    case PatternFault::EmptyGroup:
        return "there is nothing between the brackets: add an item, or remove them";
    case PatternFault::EmptyItem:
        return "an item is missing beside this \",\": add it, or remove the \",\"";
    case PatternFault::IncompleteRange:
        return "a range needs a value on both sides of \"-\": add it, or remove the \"-\"";
    case PatternFault::RepeatedDash: return DescribeRepeatedDash(place);
    case PatternFault::RepeatedStar:
        return "one \"*\" already matches any run of characters: remove this one";
    case PatternFault::StarInGroup:
        return "\"*\" cannot stand inside [ ] or { }: remove it, or write " + WaysToWrite('*');
    case PatternFault::SeparatorOutsideGroup: return DescribeSeparator(culprit);
    case PatternFault::LongSetItem: return DescribeLongSetItem(culprit);
    case PatternFault::MixedBrackets: return DescribeMixedBrackets(culprit);
    case PatternFault::EmptyExclusion:
        return "\"!\" excludes nothing here: put a value after it, as in !5, or remove it";
    case PatternFault::MisplacedExclusion: return DescribeMisplacedExclusion(place);
    case PatternFault::ExclusionOfRange:
        return "\"!\" takes one value and no range: exclude the values one by one, as in !1,!2";
    case PatternFault::MixedRange:
        return "the ends of " + Quoted(culprit) +
               " do not belong together: use two numbers, two capital or two small letters";
    case PatternFault::DescendingRange: return DescribeDescending(culprit);
    case PatternFault::UnequalWidth:
        return Quoted(culprit) +
               " has a leading zero: give both ends the same number of digits, as in 01-10";
    case PatternFault::RepeatedSymbol: return DescribeRepeated(culprit, symbol);
    case PatternFault::NoPositiveItem:
        return std::string("these brackets only exclude: add what they are to match, as in ") +
               (culprit == "[" ? "[0-9,!5]" : "{10-99,!50}");
    case PatternFault::WrongClosing: return DescribeWrongClosing(culprit);
    case PatternFault::NumberTooLarge: return DescribeTooLarge(culprit);
    }
    return {};
}

} // namespace

PatternRejection Reject(Finding const& finding, std::string_view written, std::string_view stored) {
    std::size_t const begin = PositionAsWritten(written, stored, finding.position);
    std::size_t const end = PositionAsWritten(written, stored, finding.position + finding.length);
    return {finding.fault, begin,
            Describe(finding.fault, Culprit(written, begin, end), finding.symbol)};
}

} // namespace CallRecordingUtils
