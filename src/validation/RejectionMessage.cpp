// Words every kind of rejection: what is wrong, then what to change.

#include "validation/RejectionMessage.h"

#include <cstdint>
#include <limits>

#include "common/DecimalNumber.h"
#include "language/Characters.h"
#include "language/Forms.h"

namespace CallRecordingUtils {
namespace {

void AppendPrintable(std::string& text, char c) {
    if (c >= ' ' && c <= '~') {
        text += c;
        return;
    }
    constexpr char digits[] = "0123456789ABCDEF";
    auto const byte = static_cast<unsigned char>(c);
    text += "\\x";
    text += digits[byte >> 4];
    text += digits[byte & 15];
}

/// The text in quotes, cut where a sentence on one line has no more room for it.
std::string Quoted(std::string_view text) {
    constexpr std::size_t longest = 24;
    std::string quoted = "\"";
    for (char c : text.substr(0, longest))
        AppendPrintable(quoted, c);
    return quoted + (text.size() > longest ? "...\"" : "\"");
}

std::string Escape(char c) {
    return std::string("\\") + c;
}

std::string DescribeReserved(std::string_view culprit) {
    char const escaped = EscapedCharacter(culprit.front());
    bool const isOfSipAddress = culprit == "@" || culprit == ":";
    return Quoted(culprit) + " is reserved for the stored form of \"" + Escape(escaped) +
           "\": write that if it is meant, else remove it" +
           (isOfSipAddress ? " (the parts of a SIP address are checked one by one)" : "");
}

std::string DescribeInvalid(std::string_view culprit) {
    bool const isAngle = culprit == "<" || culprit == ">";
    return Quoted(culprit) + " cannot stand in a pattern: " +
           (isAngle ? "write a range expression in braces, as in {1-5}"
                    : "use ASCII letters, digits or one of " + std::string(kPunctuation));
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
           Escape(culprit.front()) + " for the character itself";
}

std::string DescribeLongSetItem(std::string_view culprit) {
    if (culprit.substr(0, 1) == "!")
        return Quoted(culprit) +
               " excludes more than one symbol: in a set write each by itself, as in !2,!3";
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
    if (kind == SymbolKind::Digit &&
        ParseDecimal(culprit) == std::numeric_limits<std::int32_t>::max())
        return range + "the first number must be smaller than 2147483647";
    if (kind == SymbolKind::Digit)
        return range + "the first number must be smaller than the second";
    if (culprit.size() > 3)
        return range + "only the first letter of each end counts, and the low one must come first";
    return range + "the first letter must come before the second" +
           (kind == KindOf(culprit.back()) ? "" : " (capital letters come before small ones)");
}

std::string DescribeRepeated(std::string_view culprit, char symbol) {
    bool const isRange = culprit.size() == 3;
    if (isRange)
        return Quoted({&symbol, 1}) + " is given twice in this set: " + Quoted(culprit) +
               " repeats it, so change the range or what stands before";
    return Quoted(culprit) + " is given twice in this set: remove it here or before";
}

// NOLINTNEXTLINE(readability-function-size): a table of sentences, one line each.
std::string Describe(PatternFault fault, std::string_view culprit, char symbol) {
    switch (fault) {
    case PatternFault::ReservedCharacter: return DescribeReserved(culprit);
    case PatternFault::StrayBackslash:
        return "only * ? , - and ! can follow a backslash: remove it, or add one of these";
    case PatternFault::ExclusionOutsideGroup:
        return "\"!\" excludes an item: put it inside [ ] or { }, as in [0-9,!5], or write \\! for "
               "the "
               "character itself";
    case PatternFault::InvalidCharacter: return DescribeInvalid(culprit);
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
        return "a range needs a value on both sides of \"-\": add it, or write \\- for the "
               "character itself";
    case PatternFault::RepeatedDash:
        return "a range has one \"-\" only: remove this one, or put \",\" between two items";
    case PatternFault::RepeatedStar:
        return "one \"*\" already matches any run of characters: remove this one";
    case PatternFault::StarInGroup:
        return "\"*\" cannot stand inside [ ] or { }: remove it, or write \\* for the character "
               "itself";
    case PatternFault::SeparatorOutsideGroup: return DescribeSeparator(culprit);
    case PatternFault::LongSetItem: return DescribeLongSetItem(culprit);
    case PatternFault::MixedBrackets: return DescribeMixedBrackets(culprit);
    case PatternFault::EmptyExclusion:
        return "\"!\" excludes nothing here: put a value after it, as in !5, or remove it";
    case PatternFault::MisplacedExclusion:
        return "\"!\" must follow \"[\", \"{\" or \",\": put one of these before it, or remove it";
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
    }
    return {};
}

} // namespace

PatternRejection Reject(Finding const& finding, std::string_view written, std::string_view stored) {
    std::size_t const begin = PositionAsWritten(written, stored, finding.position);
    std::size_t const end = PositionAsWritten(written, stored, finding.position + finding.length);
    std::string_view const culprit = written.substr(begin, end - begin);
    return {finding.fault, begin, Describe(finding.fault, culprit, finding.symbol)};
}

} // namespace CallRecordingUtils
