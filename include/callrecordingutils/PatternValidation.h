/// @file
/// The checks that a client runs on a pattern before it stores the pattern in a rule, and the
/// reason why a pattern fails them.
///
/// A pattern describes calling or called numbers. A user writes it in the entry form:
///
///     pattern      any number of: symbol, escape, "?", "*", set, range expression
///     symbol       an ASCII letter or digit, or one of ' _ + = / ~ ( ) . ; $ &
///     escape       "\*", "\?", "\,", "\-" or "\!": the escaped character
///     "?"          any one character
///     "*"          any run of characters, also none
///     set          "[" items separated by "," "]": one character out of the items, each one of
///                    symbol, escape, "?"
///                    a range: digit "-" digit, capital "-" capital, small letter "-" small letter
///                    "!" symbol, "!" escape: not this character
///     range        "{" items separated by "," "}": a run of characters out of the items, each
///     expression   one of
///                    a value: symbols, escapes and "?"
///                    a range: number "-" number, letters "-" letters
///                    "!" value: not this value
///
/// - "-" and "," stand in groups (sets and range expressions) only; "*" stands outside of them
///   only, and never beside another. Groups do not nest.
/// - Every group has an item that is not an exclusion. A set gives no symbol twice; "?" it may.
/// - Both ends belong to a range, and the first must be smaller than the second. Numbers have 32
///   bits; greater ones count as 2147483647. When the low end has several digits and either end
///   begins with 0, both must have the same number of digits. Of letters in a range expression
///   only the first of each end are compared, by their ASCII codes.
///
/// Examples:
///
///     accepted              because
///     (empty)               well formed; as a rule's pattern it never matches
///     0?5*                  "?" and "*" stand anywhere outside of groups
///     \*72                  an escaped "*"; stored as #72
///     [1-3,7,a-f,?,!2]      symbols, ranges of symbols, any symbol, an exclusion
///     00{49-59,!50}[0,5]    symbols, a range expression and a set
///     {12,a?c,!abc}         values, one with a wildcard, and an exclusion
///     {01-10}  {1-05}       ends of one width; a low end of one digit demands none
///     [1,!2]!3  [1,!!]      only the first "!" of a pattern has to stand in a group, and what an
///                           exclusion excludes is not looked at
///
///     rejected              because
///     #72                   "#", "^", "@", "%" and ":" are reserved for the stored form
///     12,3  [1]-[2]         "," and "-" outside of groups
///     [12]  [10-20]         a set lists single symbols; {12} and {10-20} are meant
///     [1-5,3]               3 is given twice
///     [!1]  {!5}            nothing that the group could match
///     [5-5]  {c-a}  [a-Z]   ranges that do not run upwards, or from one kind of letter to another
///     {01-100}              a leading zero, and ends of different width
///     [[1]]  [1  }{         groups nested, not closed, not opened
///     <1-5>                 angle brackets belong to the form that the matcher reads
///
/// The stored form holds each escape as one character: "#" for "\*", "^" for "\?", "@" for "\,",
/// "%" for "\-" and ":" for "\!". IsPatternIncorrect writes these, and the matcher compares them
/// with the address as they are: \*72 matches the address #72. To write range expressions between
/// "<" and ">", as the matcher reads them, is left to the client. Because "@" and ":" are reserved,
/// the user, host and port of a SIP address are checked one by one.
///
/// Threads: all functions here are pure; any thread may call them at any time, as long as no other
/// thread uses the string that IsPatternIncorrect is about to rewrite. So may the child of a fork.
///
/// Errors: std::bad_alloc is all that is ever thrown; IsPatternIncorrect may then have rewritten
/// its string.
///
/// Cost: time in proportion to the length of the text, which has no limit; constant stack.
/// Characters are bytes, and the process's locale has no influence.

#ifndef CALLRECORDINGUTILS_PATTERNVALIDATION_H
#define CALLRECORDINGUTILS_PATTERNVALIDATION_H

#include <cstddef>
#include <optional>
#include <string>

#include <callrecordingutils/Export.h>

namespace CallRecordingUtils {

/// What is wrong with a pattern or range expression. Values keep their meaning; new ones are added
/// at the end. "Group" stands for a set or a range expression.
enum class PatternFault {
    ReservedCharacter,     ///< One of # ^ @ % : in the entry form.
    StrayBackslash,        ///< A backslash that begins no escape.
    ExclusionOutsideGroup, ///< The first "!" stands in no group.
    InvalidCharacter,      ///< A character that no pattern holds.
    NestedGroup,           ///< An opening bracket before the group begun earlier is closed.
    UnclosedGroup,         ///< An opening bracket without its closing one.
    UnopenedGroup,         ///< A closing bracket without its opening one.
    EmptyGroup,            ///< A group, or the text of a range expression, without any content.
    EmptyItem,             ///< Nothing between a "," and the next "," or bracket.
    IncompleteRange,       ///< Nothing on one side of a "-".
    RepeatedDash,          ///< A second "-" in an item, or "--".
    RepeatedStar,          ///< "**".
    StarInGroup,           ///< "*" inside a group.
    SeparatorOutsideGroup, ///< "-" or "," outside of groups.
    LongSetItem,           ///< More in an item of a set than one symbol or range.
    MixedBrackets,         ///< A bracket of the other kind inside a group.
    EmptyExclusion,        ///< "!" with nothing after it.
    MisplacedExclusion,    ///< "!" inside of an item instead of at its start.
    ExclusionOfRange,      ///< "!" with a range after it.
    MixedRange,            ///< Ends of a range that are not two numbers or letters of one kind.
    DescendingRange,       ///< A low end that is not smaller than the high end.
    UnequalWidth,          ///< A leading zero in a range whose ends differ in length.
    RepeatedSymbol,        ///< A symbol given twice in one set.
    NoPositiveItem,        ///< A group that only excludes.
    WrongClosing,          ///< A group that the closing bracket of the other kind closes.
    NumberTooLarge,        ///< A range that runs upwards, but begins where 32 bits end.
};

/// Why a text is rejected: the first thing that the checks found wrong with it.
struct PatternRejection {
    PatternFault fault; ///< What is wrong.
    /// The byte, counted from 0 in the text as the caller gave it, that the user has to look at. At
    /// most the length of the text.
    std::size_t position;
    /// One short English sentence that tells the user what to change, printable ASCII only.
    /// Characters are quoted as the user wrote them. For people to read: the wording may change.
    std::string message;
};

/// What the user should look at in a pattern, without a fault to name it.
struct PatternProblem {
    std::size_t position; ///< As that of a PatternRejection.
    std::string message;  ///< As that of a PatternRejection.
};

/// Returns true when pattern, in the entry form, is malformed, and false when it is well formed.
/// In both cases the escapes in pattern are replaced by their stored form, except when a reserved
/// character is the reason of the rejection: then pattern is unchanged.
CALLRECORDINGUTILS_EXPORT bool IsPatternIncorrect(std::string& pattern);

/// Returns nothing when pattern, in the entry form, is well formed, else the reason why it is not.
/// Has a value exactly when IsPatternIncorrect returns true.
CALLRECORDINGUTILS_EXPORT std::optional<PatternRejection>
ExplainPattern(std::string const& pattern);

/// Returns what in pattern, in the entry form, is well formed and yet surely not meant, the first
/// of it: a part that has no effect, takes everything, or is read in another way than it looks.
/// Nothing for a malformed pattern. A warning to show before the pattern is stored; what it says is
/// certain, but not everything odd is found (groups of more than 1000 bytes are not looked at).
CALLRECORDINGUTILS_EXPORT std::optional<PatternProblem> SuspectPattern(std::string const& pattern);

/// Returns whether range is the text of a well-formed range expression, from its "{" to its "}",
/// with escapes in their stored form. What follows the last "," or "}" is not read as an item, so
/// that 5-1, which has neither, passes.
CALLRECORDINGUTILS_EXPORT bool IsRangeCorrect(std::string const& range);

/// Returns nothing when range is well formed, else the reason why it is not. Has a value exactly
/// when IsRangeCorrect returns false.
CALLRECORDINGUTILS_EXPORT std::optional<PatternRejection> ExplainRange(std::string const& range);

} // namespace CallRecordingUtils

#endif
