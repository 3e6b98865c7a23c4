// Finds the bracket that is wrong where groups do not open and close in turn.

#include "validation/Brackets.h"

#include "language/Characters.h"

namespace CallRecordingUtils {
namespace {

constexpr std::size_t kNone = std::string_view::npos;

/// Returns the first bracket of text from at on and moves at to it; '\0' when there is none.
char NextBracket(std::string_view text, std::size_t& at) {
    at = text.find_first_of("[]{}", at);
    return at == kNone ? '\0' : text[at];
}

char ClosingOf(char opening) {
    return opening == '[' ? ']' : '}';
}

/// An opening bracket, and the next bracket, a closing one of the other kind.
struct WrongPair {
    std::size_t opening = kNone;
    std::size_t closing = kNone;
};

/// Returns the first two brackets of text that follow each other and look like a pair, but are of
/// different kinds. A bracket that pairs with its neighbour on the other side does not count.
WrongPair FindWrongPair(std::string_view text) {
    std::size_t opening = 0;
    char previous = '\0';
    for (char bracket = NextBracket(text, opening); bracket != '\0';) {
        std::size_t closing = opening + 1;
        char const next = NextBracket(text, closing);
        bool const isWrong =
            Contains(kOpenings, bracket) && Contains(kClosings, next) && next != ClosingOf(bracket);
        if (isWrong) {
            std::size_t after = closing + 1;
            bool const hasPartner = NextBracket(text, after) == ClosingOf(bracket) ||
                                    (Contains(kOpenings, previous) && ClosingOf(previous) == next);
            if (!hasPartner)
                return {opening, closing};
        }
        previous = bracket;
        bracket = next;
        opening = closing;
    }
    return {};
}

} // namespace

Finding FirstMisplacedBracket(std::string_view text, Brackets brackets) {
    std::size_t open = kNone;
    for (std::size_t at = 0; at < text.size(); ++at) {
        bool const isOpening = text[at] == brackets.opening;
        if (!isOpening && text[at] != brackets.closing)
            continue;
        if (isOpening && open != kNone)
            return {PatternFault::NestedGroup, at, 1};
        if (!isOpening && open == kNone)
            return {PatternFault::UnopenedGroup, at, 1};
        open = isOpening ? at : kNone;
    }
    return {PatternFault::UnclosedGroup, open, 1};
}

Finding BlameWrongClosing(std::string_view text, Finding const& finding) {
    bool const isAboutBrackets = finding.fault == PatternFault::NestedGroup ||
                                 finding.fault == PatternFault::UnclosedGroup ||
                                 finding.fault == PatternFault::UnopenedGroup;
    WrongPair const pair = isAboutBrackets ? FindWrongPair(text) : WrongPair{};
    if (pair.opening == kNone || finding.position < pair.opening)
        return finding;
    return {PatternFault::WrongClosing, pair.closing, 1};
}

} // namespace CallRecordingUtils
