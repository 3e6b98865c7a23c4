// The address of one side of a call as people and call records write it, and what is taken off it.

#ifndef INSPECTION_CALLADDRESS_H
#define INSPECTION_CALLADDRESS_H

#include <string>
#include <string_view>

#include "calls/Cleanings.h"

namespace CallRecordingUtils {

/// An address as ReadCallParty takes it.
struct CallAddress {
    std::string text;
    Cleanings cleanings; // What was taken off to get there.
};

/// Takes off what stands around the address in written: 201, 201@pbx:5060, sip:201@pbx;user=phone,
/// "Alice" <sip:201@pbx>;tag=1, Alice <201>, tel:+49-30-1234, (030) 12 34. What is none of these
/// stays as it is.
CallAddress CleanCallAddress(std::string_view written);

/// The words for cleanings, separated by commas; empty when there are none.
std::string Words(Cleanings cleanings);

} // namespace CallRecordingUtils

#endif
