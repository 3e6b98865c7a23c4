// One side of a call as somebody writes it who asks about the call.

#ifndef CALLS_ASKEDSIDE_H
#define CALLS_ASKEDSIDE_H

#include <optional>
#include <string>
#include <string_view>

#include <callrecordingutils/CallRecordingRuleParams.h>

#include "calls/Cleanings.h"
#include "calls/SideTexts.h"

namespace CallRecordingUtils {

struct AskedSide {
    std::string address;          ///< As written.
    std::optional<CallType> type; ///< Of a typed address; nothing for a party.
    Cleanings cleanings;          ///< What was left out to read a party.
    SideTexts texts;
};

/// Reads a party or, if there is a type, a typed address, which is compared byte for byte.
/// REQUIRES: type is not any.
AskedSide ReadAskedSide(std::string_view address, std::optional<CallType> type);

/// Describes the side to a person: "a party with user 201, host pbx, port 5060", "number 201
/// (typed)".
std::string Description(AskedSide const& side);

/// The words for cleanings, separated by commas; empty when there are none.
std::string Words(Cleanings cleanings);

} // namespace CallRecordingUtils

#endif
