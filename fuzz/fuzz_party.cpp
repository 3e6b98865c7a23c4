/// @file
/// Fuzzes the reading of parties: an input is an address.

#include "Fuzzing.h"

#include "calls/Party.h"
#include "calls/SideTexts.h"

using namespace CallRecordingUtils;
using fuzzing::Require;

namespace {

bool IsDigits(std::string const& text) {
    return text.find_first_not_of("0123456789") == std::string::npos;
}

/// The user as a URI would have it, so that reading gives it back.
std::string Encoded(std::string const& user) {
    std::string encoded;
    for (char const c : user)
        if (Contains("%;", c) || Contains(" \t-.()", c))
            for (char const part : {'%', "0123456789abcdef"[c >> 4], "0123456789abcdef"[c & 15]})
                encoded += part;
        else
            encoded += c;
    return encoded;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::string const text(data, data + size);
    Party const party = ReadParty(text);
    Require(party.user.size() + party.host.size() <= size, "a party is part of its text", text);
    Require(IsDigits(party.port), "a port is a number", text);
    Require(party.port.empty() == party.host.empty(), "a port goes with a host", text);

    SideTexts const side(party);
    Require(side.SeenBy(CALL_TYPE_ANY)->size() == party.user.size(), "any sees the user", text);
    Require(side.SeenBy(CALL_TYPE_NUMBER).has_value() == party.HasNumber(), "number", text);
    Require(side.SeenBy(CALL_TYPE_SIP).has_value() == !party.host.empty(), "SIP", text);
    Require(!side.SeenBy(CALL_TYPE_NUMBER2), "number2 sees no party", text);

    // A tab cannot be written as an escape, and a blank or bracket belongs to no host.
    bool const isOrdinary = party.user.find_first_of("\t\r\n") == std::string::npos &&
                            party.host.find_first_of(" \t\r\n[]:") == std::string::npos;
    Party const again = ReadParty(Encoded(party.user), party.host, party.port);
    Require(!isOrdinary || (again.user == party.user && again.host == party.host),
            "parts are read like the whole", text);
    return 0;
}
