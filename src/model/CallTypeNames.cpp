// Converts between call types and their names.

#include "model/CallTypeNames.h"

namespace CallRecordingUtils {

char const* CallTypeName(CallType type) {
    return kCallTypeNames[type];
}

std::optional<CallType> ParseCallType(std::string const& text) {
    for (int type = CALL_TYPE_NUMBER; type <= CALL_TYPE_ANY; ++type)
        if (text == kCallTypeNames[type] || text == std::to_string(type))
            return static_cast<CallType>(type);
    return std::nullopt;
}

} // namespace CallRecordingUtils
