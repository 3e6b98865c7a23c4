// One side of a call as JSON.

#ifndef JSON_CALLJSON_H
#define JSON_CALLJSON_H

#include <nlohmann/json.hpp>

#include "model/SipAddress.h"

namespace CallRecordingUtils {

nlohmann::ordered_json ToJson(CallParty const& party);

} // namespace CallRecordingUtils

#endif
