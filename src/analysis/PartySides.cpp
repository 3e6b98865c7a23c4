// Puts together what rules compare of a party.

#include "analysis/PartySides.h"

#include <algorithm>

#include "language/Characters.h"

namespace CallRecordingUtils {
namespace {

/// Stands for a byte that was dialled and that patterns hold as the code of another one. It is no
/// literal, so only a wildcard takes it.
constexpr char kMatchesNoCode = '\x01';

/// A "," has a code only where no "@" follows, which is its code.
std::string Coded(std::string_view text, bool hasCodeOfComma) {
    std::string coded(text);
    for (char& c : coded) {
        std::size_t const code = kEscapedCharacters.find(c);
        if (code != std::string_view::npos && (c != ',' || hasCodeOfComma))
            c = kEscapeCodes[code];
        else if (c == '^' || c == '@' || c == '%')
            c = kMatchesNoCode;
    }
    return coded;
}

bool IsNumber(std::string_view user) {
    return !user.empty() &&
           std::all_of(
               user.begin(), user.end(),
               [](char c) { return IsDigit(c) || c == '+' || c == '*' || c == '#'; });
}

} // namespace

std::vector<CallParty> TypedSidesOf(CallParty const& party) {
    bool const hasHost = !party.params.host.empty();
    CallParams params;
    params.user = Coded(party.params.user, !hasHost);
    std::vector<CallParty> sides{
        {params, IsNumber(party.params.user) ? CALL_TYPE_NUMBER : CALL_TYPE_NUMBER2}};
    if (hasHost) {
        params.host = Coded(party.params.host, false);
        params.port = party.params.port;
        sides.push_back({params, CALL_TYPE_SIP});
    }
    return sides;
}

} // namespace CallRecordingUtils
