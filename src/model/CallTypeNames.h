// The names that people use for the call types.

#ifndef MODEL_CALLTYPENAMES_H
#define MODEL_CALLTYPENAMES_H

#include <optional>
#include <string>

#include <callrecordingutils/CallRecordingRuleParams.h>

namespace CallRecordingUtils {

/// Indexed by call type.
constexpr char const* kCallTypeNames[] = {"number", "sip", "number2", "any"};

char const* CallTypeName(CallType type);

/// Reads a name, or a number from 0 to 3. Returns nothing for any other text.
std::optional<CallType> ParseCallType(std::string const& text);

} // namespace CallRecordingUtils

#endif
