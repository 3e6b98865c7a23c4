// Looks at the literals that every matching text must have.

#include "calls/PartyPatterns.h"

#include <optional>

#include "language/Elements.h"
#include "model/SipAddress.h"

namespace CallRecordingUtils {
namespace {

/// Whether pattern has a literal, before the matcher stops, for which is holds.
template <typename Is>
bool RequiresLiteral(std::string_view pattern, Is is) {
    for (Element element = ReadElement(pattern, 0); element.end != element.begin;
         element = ReadElement(pattern, element.end))
        if (element.construct == Construct::Literal && is(pattern[element.begin]))
            return true;
    return false;
}

} // namespace

char const* WhyNoPartyMatches(std::string_view pattern, CallType type) {
    if (pattern.empty())
        return "is empty, and matches nothing";
    if (type == CALL_TYPE_NUMBER2)
        return "is of type number2, which takes no party of a call";
    auto const isForeignToNumbers = [](char c) { return !IsDigit(c) && c != '+' && c != '#'; };
    if (type == CALL_TYPE_NUMBER && RequiresLiteral(pattern, isForeignToNumbers))
        return "asks for a character that no number has: digits, +, * and #";
    if (type != CALL_TYPE_SIP)
        return nullptr;
    auto const parts = SplitSipAddress(pattern);
    if (!parts)
        return "has no \"@\" before its port, and matches nothing";
    // Up to the host there may be a place where the matcher stops, or a group that swallows the
    // "@".
    bool const isUserPlain = parts->user.find_first_of("<[{}]>\\,-!") == std::string_view::npos;
    if (isUserPlain && RequiresLiteral(parts->host, [](char c) { return c >= 'A' && c <= 'Z'; }))
        return "has a capital in its host, and the hosts of parties are in small letters";
    return nullptr;
}

} // namespace CallRecordingUtils
