// Writes calls as JSON.

#include "json/CallJson.h"

#include "json/Names.h"

namespace CallRecordingUtils {

nlohmann::ordered_json ToJson(CallParty const& party) {
    return {{kCallType, static_cast<int>(party.type)}, {kCallAddress, AddressText(party)}};
}

nlohmann::ordered_json CallToJson(CallParty const& from, CallParty const& to) {
    return {{kCallFrom, ToJson(from)}, {kCallTo, ToJson(to)}};
}

nlohmann::ordered_json ToJson(AskedSide const& side) {
    if (Party const* const party = side.texts.AsParty())
        return {{kSideKind, "party"},
                {kPartyUser, party->user},
                {kPartyHost, party->host},
                {kPartyPort, party->port}};
    return {{kSideKind, "typed"},
            {kCallType, static_cast<int>(*side.type)},
            {kCallAddress, side.address}};
}

} // namespace CallRecordingUtils
