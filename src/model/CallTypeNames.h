// The names of the call types, as people write them.

#ifndef MODEL_CALLTYPENAMES_H
#define MODEL_CALLTYPENAMES_H

#include <optional>
#include <string>

#include <callrecordingutils/CallRecordingRuleParams.h>

namespace CallRecordingUtils {

/// By the numbers of the call types.
constexpr char const* kCallTypeNames[] = {"number", "sip", "number2", "any"};

char const* CallTypeName(CallType type);

/// Reads a name or a number from 0 to 3.
std::optional<CallType> ParseCallType(std::string const& text);

} // namespace CallRecordingUtils

#endif
