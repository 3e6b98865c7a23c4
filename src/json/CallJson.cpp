// Writes the sides of calls as JSON.

#include "json/CallJson.h"

namespace CallRecordingUtils {

nlohmann::ordered_json ToJson(CallParty const& party) {
    return {{"call_type", static_cast<int>(party.type)}, {"address", AddressText(party)}};
}

} // namespace CallRecordingUtils
