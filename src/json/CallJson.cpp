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

} // namespace CallRecordingUtils
