// Looks at the characters of pieces for notations of other programs.

#include "validation/ForeignNotation.h"

#include <string_view>

#include "language/Characters.h"
#include "language/Elements.h"

namespace CallRecordingUtils {
namespace {

bool IsGroup(Element const& element) {
    return element.construct == Construct::Set || element.construct == Construct::Range;
}

/// Removes the digits that text begins with. Returns how many there were.
std::size_t TakeDigits(std::string_view& text) {
    std::size_t count = 0;
    while (count < text.size() && IsDigit(text[count]))
        ++count;
    text.remove_prefix(count);
    return count;
}

} // namespace

std::optional<Stretch> FindPlusAfterGroup(PatternPiece const& piece) {
    bool isAfterGroup = false;
    for (Element element = ReadElement(piece.text, 0); element.end != element.begin;
         element = ReadElement(piece.text, element.end)) {
        if (isAfterGroup && piece.text[element.begin] == '+')
            return Stretch{element.begin, 1};
        isAfterGroup = IsGroup(element);
    }
    return std::nullopt;
}

std::optional<Stretch> FindDialPlan(PatternPiece const& piece) {
    std::string_view const text = piece.text;
    if (piece.kind != PatternPiece::Kind::Number || text.empty())
        return std::nullopt;
    std::size_t letters = 0;
    for (Element element = ReadElement(text, text[0] == '_' ? 1 : 0); element.end != element.begin;
         element = ReadElement(text, element.end)) {
        char const c = text[element.begin];
        bool const isLetter = c == 'X' || c == 'Z' || c == 'N';
        bool const isLast = element.end == text.size();
        letters += isLetter ? 1 : 0;
        if (!isLetter && !IsDigit(c) && !IsGroup(element) && !(c == '.' && isLast))
            return std::nullopt;
    }
    return letters > 0 ? std::optional(Stretch{0, text.size()}) : std::nullopt;
}

std::optional<Stretch> FindShortenedNumber(PatternPiece const& piece) {
    constexpr std::string_view kExponent = "E+";
    std::string_view rest = piece.text;
    if (piece.kind != PatternPiece::Kind::Number || TakeDigits(rest) != 1)
        return std::nullopt;
    if (rest.substr(0, 1) == ".") {
        rest.remove_prefix(1);
        if (TakeDigits(rest) == 0)
            return std::nullopt;
    }
    if (rest.substr(0, kExponent.size()) != kExponent)
        return std::nullopt;
    rest.remove_prefix(kExponent.size());
    bool const isNumber = TakeDigits(rest) > 0 && rest.empty();
    return isNumber ? std::optional(Stretch{0, piece.text.size()}) : std::nullopt;
}

} // namespace CallRecordingUtils
