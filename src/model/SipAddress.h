// Splits and joins SIP addresses, and patterns for them: user@host:port.

#ifndef MODEL_SIPADDRESS_H
#define MODEL_SIPADDRESS_H

#include <optional>
#include <string>
#include <string_view>

#include <CallParams.h>

#include <callrecordingutils/CallRecordingRuleParams.h>

namespace CallRecordingUtils {

/// The pieces of a SIP address, or of a pattern for one. They are views of the text that was split.
struct SipAddress {
    std::string_view user;
    std::string_view host;
    std::optional<std::string_view> port; // What follows the ":"; nothing without a ":".

    /// Whether there is a port; a pattern without one takes every port.
    bool HasPort() const { return port && !port->empty(); }
};

/// Splits at the last "@" into user and host, without a port. Returns nothing without an "@".
std::optional<SipAddress> SplitUserAndHost(std::string_view address);

/// Splits off the port after the last ":" and returns the text before the ":". Without a ":" port
/// is nothing.
std::string_view SplitPort(std::string_view address, std::optional<std::string_view>& port);

/// Splits a SIP pattern, in either form. The last ":" begins the port, and the last "@" before it
/// ends the user part. Returns nothing without such an "@".
std::optional<SipAddress> SplitSipAddress(std::string_view address);

/// One side of a call, as a telephony process passes it.
struct CallParty {
    CallParams params;
    CallType type;
};

/// Reads the address of a call as people and call records write it: for a SIP side user@host or
/// user@host:port, where the ":" between the brackets of an IPv6 address do not begin a port; for
/// any other side the number. Without a type, an address with an "@" is of type SIP, and any other
/// one is a number.
CallParty ReadCallParty(std::string_view address, std::optional<CallType> type);

/// Returns the address of one side of a call in the form that ReadCallParty reads.
std::string AddressText(CallParty const& party);

} // namespace CallRecordingUtils

#endif
