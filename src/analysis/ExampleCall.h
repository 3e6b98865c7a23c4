// Calls to show, put together of what the automata read.

#ifndef ANALYSIS_EXAMPLECALL_H
#define ANALYSIS_EXAMPLECALL_H

#include "analysis/CallSearch.h"
#include "model/SipAddress.h"

namespace CallRecordingUtils {

/// A call to show: what a telephony process would hand over for it. Of parties it is what was
/// dialled; the type of one with a host is SIP, of another one number.
struct ExampleCall {
    CallParty caller;
    CallParty called;
};

ExampleCall ExampleOf(FoundCall const& call, CallKind calls);

/// The text of one side, such that a typed question that is asked with it is about this very side:
/// the number, or user@host:port; the ":" of an empty port is left out where none comes before it.
std::string AddressTextOf(CallParty const& party);

} // namespace CallRecordingUtils

#endif
