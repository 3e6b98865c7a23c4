// How rules see a party: as one or two typed sides of a call.

#ifndef ANALYSIS_PARTYSIDES_H
#define ANALYSIS_PARTYSIDES_H

#include <vector>

#include "model/SipAddress.h"

namespace CallRecordingUtils {

/// Typed sides which together see what party sees: a rule side, which is not one of the second kind
/// of number, is satisfied by the party if and only if it is satisfied by one of them. Where rules
/// of type any alone see the user, the type is the second kind of number.
std::vector<CallParty> TypedSidesOf(CallParty const& party);

} // namespace CallRecordingUtils

#endif
