// Calls as JSON, under the names of Names.h.

#ifndef JSON_CALLJSON_H
#define JSON_CALLJSON_H

#include <nlohmann/json.hpp>

#include "calls/AskedSide.h"
#include "model/SipAddress.h"

namespace CallRecordingUtils {

/// One side of a call.
nlohmann::ordered_json ToJson(CallParty const& party);

/// Both sides of a call.
nlohmann::ordered_json CallToJson(CallParty const& from, CallParty const& to);

/// One side of a question about a call.
nlohmann::ordered_json ToJson(AskedSide const& side);

} // namespace CallRecordingUtils

#endif
