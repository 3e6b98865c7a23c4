/// @file
/// Checks for patterns, to be run before a pattern is stored in a rule, with the reason if a
/// pattern fails.
///
/// A pattern describes calling or called numbers. Users write it in the entry form:
///
///     pattern      any number of: symbol, escape, "?", "*", set, range expression
///     symbol       an ASCII letter or digit, or one of ' _ + = / ~ ( ) . ; $ &
///     escape       "\*", "\?", "\,", "\-" or "\!": the escaped character
///     "?"          any one character
///     "*"          any run of characters, even none
///     set          "[" items separated by "," "]": one character that is in the items. An item is
///                    symbol, escape, "?"
///                    a range: digit "-" digit, capital "-" capital, small letter "-" small letter
///                    "!" symbol, "!" escape: not this character
///     range        "{" items separated by "," "}": a run of characters that is in the items. An
///     expression   item is
///                    a value: symbols, escapes and "?"
///                    a range: number "-" number, letters "-" letters
///                    "!" value: not this value
///
/// - "-" and "," are only allowed inside groups (sets and range expressions), "*" only outside of
///   groups and not next to another "*". Groups do not nest.
/// - Every group has an item that is not an exclusion. A set has no symbol twice, other than "?".
/// - A range includes both ends, and the first must be smaller than the second. Numbers have 32
///   bits; greater ones count as 2147483647. If the low end has several digits and one of the ends
///   begins with 0, both must have the same number of digits. If the ends in a range expression are
///   letters, only the first letter of each is compared, by its ASCII code.
///
/// Examples:
///
///     accepted              because
///     (empty)               well formed, although it never matches in a rule
///     0?5*                  "?" and "*" are allowed anywhere outside of groups
///     \*72                  an escaped "*"; stored as #72
///     [1-3,7,a-f,?,!2]      symbols, ranges of symbols, any symbol, an exclusion
///     00{49-59,!50}[0,5]    symbols, a range expression and a set
///     {12,a?c,!abc}         values, one with a wildcard, and an exclusion
///     {01-10}  {1-05}       ends of the same width; a low end of one digit does not need it
///     [1,!2]!3  [1,!!]      only the first "!" of a pattern has to be in a group, and what an
///                           exclusion of a set excludes is not checked
///
///     rejected              because
///     #72                   "#", "^", "@", "%" and ":" are reserved for the stored form
///     12,3  [1]-[2]         "," and "-" outside of groups
///     [12]  [10-20]         the items of a set are single symbols; {12} and {10-20} are meant
///     [1-5,3]               3 is there twice
///     [!1]  {!5}            the group has nothing to match
///     [5-5]  {c-a}  [a-Z]   ranges that do not run upwards, or between capital and small letters
///     {01-100}              a leading zero, and ends of different width
///     [[1]]  [1  }{         groups that are nested, not closed, not opened
///     <1-5>                 only the form that the matcher reads has angle brackets
///
/// In the stored form each escape is one character: "#" for "\*", "^" for "\?", "@" for "\,", "%"
/// for "\-" and ":" for "\!". IsPatternIncorrect replaces escapes by these, and the matcher
/// compares them with the address as they are: \*72 matches the address #72. The client has to
/// replace the braces of range expressions by the "<" and ">" that the matcher reads. Since "@" and
/// ":" are reserved, the user, host and port of a SIP address are checked one by one.
///
/// Threads: all functions here are pure, and any thread may call them at any time, as long as no
/// other thread uses the string that IsPatternIncorrect rewrites. The child of a fork may, too.
///
/// Errors: only std::bad_alloc is thrown; IsPatternIncorrect may have rewritten its string then.
///
/// Cost: time in proportion to the length of the text, which has no limit; constant stack.
/// Characters are bytes, and the locale of the process has no influence.

#ifndef CALLRECORDINGUTILS_PATTERNVALIDATION_H
#define CALLRECORDINGUTILS_PATTERNVALIDATION_H

#include <cstddef>
#include <optional>
#include <string>

#include <callrecordingutils/Export.h>

namespace CallRecordingUtils {

/// What is wrong with a pattern or range expression. Values keep their meaning; new ones are added
/// at the end. A group is a set or a range expression.
enum class PatternFault {
    ReservedCharacter,     ///< One of # ^ @ % : in the entry form.
    StrayBackslash,        ///< A backslash that does not begin an escape.
    ExclusionOutsideGroup, ///< The first "!" is in no group.
    InvalidCharacter,      ///< A character that is not allowed in a pattern.
    NestedGroup,           ///< An opening bracket inside a group.
    UnclosedGroup,         ///< An opening bracket without its closing one.
    UnopenedGroup,         ///< A closing bracket without its opening one.
    EmptyGroup,            ///< A group, or the text of a range expression, that is empty.
    EmptyItem,             ///< Nothing between a "," and the next "," or bracket.
    IncompleteRange,       ///< Nothing on one side of a "-".
    RepeatedDash,          ///< A second "-" in an item, or "--".
    RepeatedStar,          ///< "**".
    StarInGroup,           ///< "*" inside a group.
    SeparatorOutsideGroup, ///< "-" or "," outside of groups.
    LongSetItem,           ///< More in an item of a set than one symbol or range.
    MixedBrackets,         ///< A bracket of the other kind inside a group.
    EmptyExclusion,        ///< "!" with nothing after it.
    MisplacedExclusion,    ///< "!" inside an item instead of at its start.
    ExclusionOfRange,      ///< "!" with a range after it.
    MixedRange,            ///< Ends of a range that are not two numbers, or letters of one kind.
    DescendingRange,       ///< A low end that is not smaller than the high end.
    UnequalWidth,          ///< A leading zero in a range whose ends differ in length.
    RepeatedSymbol,        ///< A symbol given twice in one set.
    NoPositiveItem,        ///< A group that only excludes.
    WrongClosing,          ///< A group that is closed by a bracket of the other kind.
    NumberTooLarge,        ///< A range that runs upwards, but whose low end exceeds 32 bits.
};

/// Why a text is rejected: the first thing that was found wrong with it.
struct PatternRejection {
    PatternFault fault; ///< What is wrong.
    /// The byte that the user should look at, counted from 0 in the text that the caller passed. At
    /// most the length of that text.
    std::size_t position;
    /// One short English sentence that says what to change, in printable ASCII. It quotes what the
    /// user wrote. For people to read; the wording may change.
    std::string message;
};

/// What the user should look at in a pattern, in words only.
struct PatternProblem {
    std::size_t position; ///< As in a PatternRejection.
    std::string message;  ///< As in a PatternRejection.
};

/// Returns true when pattern, in the entry form, is malformed, and false when it is well formed.
/// In both cases the escapes in pattern are replaced by their stored form. A pattern with a
/// reserved character is rejected and left unchanged.
CALLRECORDINGUTILS_EXPORT bool IsPatternIncorrect(std::string& pattern);

/// Returns why pattern, in the entry form, is malformed, and nothing when it is well formed: has a
/// value exactly when IsPatternIncorrect returns true.
CALLRECORDINGUTILS_EXPORT std::optional<PatternRejection>
ExplainPattern(std::string const& pattern);

/// Returns a part of pattern, in the entry form, that is well formed and yet surely not meant: it
/// has no effect, takes any rest, or is not read as it looks. Show the message as a warning before
/// the pattern is stored. What it says is certain, but not everything odd is found; groups of more
/// than 1000 bytes are not looked at. Returns nothing for a malformed pattern.
CALLRECORDINGUTILS_EXPORT std::optional<PatternProblem> SuspectPattern(std::string const& pattern);

/// Returns whether range is a well-formed range expression, from its "{" to its "}", with escapes
/// in their stored form. Text after the last "," or "}" is not checked as an item, so 5-1, which
/// has neither, passes.
CALLRECORDINGUTILS_EXPORT bool IsRangeCorrect(std::string const& range);

/// Returns why range is malformed, and nothing when it is well formed: has a value exactly when
/// IsRangeCorrect returns false.
CALLRECORDINGUTILS_EXPORT std::optional<PatternRejection> ExplainRange(std::string const& range);

} // namespace CallRecordingUtils

#endif
