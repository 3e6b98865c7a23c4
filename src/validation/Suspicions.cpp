// The list of suspicions. A new one is an entry here and a function that finds it.

#include "validation/Suspicions.h"

#include <utility>

#include "common/DecimalNumber.h"
#include "language/Elements.h"
#include "language/Forms.h"
#include "model/SipAddress.h"
#include "validation/ForeignNotation.h"
#include "validation/Sentence.h"
#include "validation/SuspiciousItems.h"

namespace CallRecordingUtils {
namespace {

constexpr std::size_t kNone = std::string_view::npos;

template <PatternPiece::Kind Kind>
std::optional<Stretch> FindEmptyPiece(PatternPiece const& piece) {
    bool const isEmpty = piece.kind == Kind && piece.text.empty();
    return isEmpty ? std::optional(Stretch{0, 0}) : std::nullopt;
}

std::optional<Stretch> FindStop(PatternPiece const& piece) {
    std::size_t const place = PlaceOfStop(piece.text);
    return place != kNone ? std::optional(Stretch{place, 1}) : std::nullopt;
}

/// A literal outside of groups that is not a digit. (An escape is not written by mistake.)
std::optional<Stretch> FindNonDigitInPort(PatternPiece const& piece) {
    if (piece.kind != PatternPiece::Kind::Port)
        return std::nullopt;
    for (Element element = ReadElement(piece.text, 0); element.end != element.begin;
         element = ReadElement(piece.text, element.end))
        if (element.construct == Construct::Literal && !IsDigit(piece.text[element.begin]) &&
            !Contains(kEscapeCodes, piece.text[element.begin]))
            return Stretch{element.begin, 1};
    return std::nullopt;
}

std::optional<Stretch> FindLargePort(PatternPiece const& piece) {
    constexpr int kGreatestPort = 65535;
    bool const isNumber = piece.text.find_first_not_of("0123456789") == kNone;
    if (piece.kind != PatternPiece::Kind::Port || !isNumber ||
        ParseDecimal(piece.text) <= kGreatestPort)
        return std::nullopt;
    return Stretch{0, piece.text.size()};
}

constexpr Suspicions kSuspicions{{
    {"", CALL_TYPE_NUMBER, FindEmptyPiece<PatternPiece::Kind::Number>,
     "an empty pattern matches nothing: write * for every number"},
    {"@pbx", CALL_TYPE_SIP, FindEmptyPiece<PatternPiece::Kind::User>,
     "nothing is written before the \"@\": write * for every user"},
    {"201@", CALL_TYPE_SIP, FindEmptyPiece<PatternPiece::Kind::Host>,
     "nothing is written after the \"@\": write * for every host"},
    {"201@pbx:abc", CALL_TYPE_SIP, FindNonDigitInPort,
     " is not a digit, but a port has digits only: leave out what is not part of the port"},
    {"201@pbx:70000", CALL_TYPE_SIP, FindLargePort,
     " is greater than 65535, the greatest port: correct it, or write * for every port"},
    {"[1,!2]!3", CALL_TYPE_NUMBER, FindStop,
     " is not in a group: the matcher stops here and takes any rest of the address, so put it into "
     "a group, as in [0-9,!5], or remove it"},
    {"{1,[2]}", CALL_TYPE_NUMBER, FindBracketInItem,
     " inside { } makes its item take nothing: leave out these brackets"},
    {"{200..299}", CALL_TYPE_NUMBER, FindDots,
     " is the text with its dots: write \"-\" for a range, as in {200-299}"},
    {"{ab-cd}", CALL_TYPE_NUMBER, FindLongLetterRange,
     " has more than one letter at an end, but a range compares only the first ones: write each "
     "text as an item, or one letter at each end, as in {a-c}"},
    {"{1-05}", CALL_TYPE_NUMBER, FindUselessZero,
     " takes no number with a leading zero: give both ends the same number of digits, as in 01-05, "
     "or leave the zero out"},
    {"{1-3000000000}", CALL_TYPE_NUMBER, FindLargeNumber,
     " takes greater numbers of this length, too, since all beyond 2147483647 count as that: write "
     "the leading digits before the range, as in 4930{0000-9999}"},
    {"[1,!2]", CALL_TYPE_NUMBER, FindIdleExclusion,
     " excludes nothing that the other items take: correct it, or remove it"},
    {"[1,!1]", CALL_TYPE_NUMBER, FindExcludedItem,
     " has no effect, since all that it takes is excluded: remove it, or the exclusion"},
    {"20[0-9]+", CALL_TYPE_NUMBER, FindPlusAfterGroup,
     " after a group is the character itself: write * for any run of characters, or the group once "
     "for each of them"},
    {"_2XX.", CALL_TYPE_NUMBER, FindDialPlan,
     " is compared as it stands, letters and all: write [0-9] for a digit, ? for any character and "
     "* for any run of them"},
    {"1.50E+10", CALL_TYPE_NUMBER, FindShortenedNumber,
     " is a number as a spreadsheet shortens it: write all of its digits"},
}};

/// Returns the first suspicion about a piece, which is written as entry.
std::optional<PatternProblem> FindInPiece(std::string_view entry, PatternPiece::Kind kind) {
    PatternPiece const piece{kind, ToStoredForm(entry)};
    for (Suspicion const& suspicion : AllSuspicions()) {
        auto const found = suspicion.find(piece);
        if (!found)
            continue;
        std::string escaped(entry);
        StoreEscapes(escaped); // The stored form except for the braces, and as long.
        std::size_t const begin = PositionAsWritten(entry, escaped, found->begin);
        std::size_t const end = PositionAsWritten(entry, escaped, found->begin + found->length);
        std::string const quoted = begin == end ? "" : Quoted(entry.substr(begin, end - begin));
        return PatternProblem{begin, quoted + suspicion.sentence};
    }
    return std::nullopt;
}

} // namespace

std::size_t PlaceOfStop(std::string_view stored) {
    Element element = ReadElement(stored, 0);
    while (element.end != element.begin)
        element = ReadElement(stored, element.end);
    return element.construct == Construct::Stop ? element.begin : kNone;
}

Suspicions const& AllSuspicions() {
    return kSuspicions;
}

std::optional<PatternProblem> FindSuspicion(std::string_view entry, CallType type) {
    if (type != CALL_TYPE_SIP)
        return FindInPiece(entry, PatternPiece::Kind::Number);
    SipAddress const pieces = SplitSipAddress(entry).value();
    std::string_view const noPort = entry.substr(entry.size());
    std::pair<std::string_view, PatternPiece::Kind> const inOrder[] = {
        {pieces.user, PatternPiece::Kind::User},
        {pieces.host, PatternPiece::Kind::Host},
        {pieces.port.value_or(noPort), PatternPiece::Kind::Port},
    };
    for (auto const& [piece, kind] : inOrder) {
        auto problem = FindInPiece(piece, kind);
        if (!problem)
            continue;
        problem->position += static_cast<std::size_t>(piece.data() - entry.data());
        return problem;
    }
    return std::nullopt;
}

} // namespace CallRecordingUtils
