// Reads the pattern element by element, from every position of the address at once.

#include "calls/Miss.h"

#include <vector>

#include "language/Elements.h"
#include "language/Forms.h"
#include "matching/ItemList.h"

namespace CallRecordingUtils {
namespace {

using Positions = std::vector<bool>; // One for each character of the address, and its end.

/// Whether element takes the characters of address from begin to end.
bool Takes(std::string_view address, std::string_view pattern, Element const& element,
           std::size_t begin, std::size_t end) {
    if (element.construct == Construct::AnyRun)
        return true;
    bool const isOne = end == begin + 1;
    if (element.construct == Construct::AnyOne)
        return isOne;
    if (element.construct == Construct::Literal)
        return isOne && address[begin] == pattern[element.begin];
    Consumed consumed;
    return end > begin && (isOne || element.construct == Construct::Range) &&
           AdmitsCandidate(ItemsOf(pattern, element), address.substr(begin, end - begin), consumed);
}

/// The positions at which element can end when it begins at one of from.
Positions EndsOf(std::string_view address, std::string_view pattern, Element const& element,
                 Positions const& from) {
    Positions ends(from.size(), false);
    std::size_t const longest = element.construct == Construct::Range
                                    ? CandidateLengths(ItemsOf(pattern, element)).longest
                                    : address.size();
    for (std::size_t begin = 0; begin < from.size(); ++begin)
        for (std::size_t end = begin; from[begin] && end < from.size() && end - begin <= longest;
             ++end)
            if (!ends[end] && Takes(address, pattern, element, begin, end))
                ends[end] = true;
    return ends;
}

/// The last one of positions; their number when there is none.
std::size_t LastOf(Positions const& positions) {
    std::size_t at = positions.size();
    while (at > 0 && !positions[at - 1])
        --at;
    return at == 0 ? positions.size() : at - 1;
}

std::string InQuotes(std::string_view text) {
    constexpr std::size_t kMost = 20;
    return '"' + std::string(text.substr(0, kMost)) + (text.size() > kMost ? "...\"" : "\"");
}

} // namespace

Miss FindMiss(std::string_view address, std::string_view pattern) {
    Positions positions(address.size() + 1, false);
    positions[0] = true;
    for (std::size_t at = 0;;) {
        Element const element = ReadElement(pattern, at);
        if (element.construct == Construct::End || element.construct == Construct::Stop)
            return {LastOf(positions), {}};
        if (element.construct == Construct::Unclosed)
            return {LastOf(positions), pattern.substr(at)};
        Positions ends = EndsOf(address, pattern, element, positions);
        if (LastOf(ends) == ends.size())
            return {LastOf(positions), pattern.substr(at, element.end - at)};
        positions = std::move(ends);
        at = element.end;
    }
}

std::string MissText(std::string_view address, Miss const& miss) {
    std::string_view const rest = address.substr(miss.position);
    bool const isStored = miss.wanted.find_first_of(kEntryFormOnly) == std::string_view::npos;
    std::string const wanted = isStored ? ToEntryForm(miss.wanted) : std::string(miss.wanted);
    if (miss.wanted.empty())
        return "goes on with " + InQuotes(rest) + " after the end of the pattern";
    if (rest.empty())
        return "ends where " + wanted + " is still to come";
    bool const isRun = miss.wanted.front() == '<';
    return "character " + std::to_string(miss.position + 1) + ": " +
           InQuotes(isRun ? rest : rest.substr(0, 1)) +
           (isRun ? " does not begin with a run of " : " is not ") + wanted;
}

} // namespace CallRecordingUtils
