// SIP addresses and patterns for them, user@host:port, split and joined.

#ifndef MODEL_SIPADDRESS_H
#define MODEL_SIPADDRESS_H

#include <optional>
#include <string>
#include <string_view>

#include <CallParams.h>

#include <callrecordingutils/CallRecordingRuleParams.h>

namespace CallRecordingUtils {

/// The pieces of a SIP address, or of a pattern for one. The views live as long as the text that
/// was split.
struct SipAddress {
    std::string_view user;
    std::string_view host;
    std::optional<std::string_view> port; // What is behind the ":"; nothing without a ":".

    /// Whether a port is named; without one a pattern takes every port.
    bool HasPort() const { return port && !port->empty(); }
};

/// Splits at the last "@"; the whole text is host and user, without a port. Nothing without an "@".
std::optional<SipAddress> SplitUserAndHost(std::string_view address);

/// Splits off the port behind the last ":" and returns the text before it; port is nothing when
/// there is no ":".
std::string_view SplitPort(std::string_view address, std::optional<std::string_view>& port);

/// Splits a SIP pattern, in either form. The last ":" begins the port, and the last "@" before it
/// ends the user part. Nothing without such an "@".
std::optional<SipAddress> SplitSipAddress(std::string_view address);

/// One side of a call, as a telephony process hands it over.
struct CallParty {
    CallParams params;
    CallType type;
};

/// Reads the address of a call as a person or a call record writes it: for a SIP side user@host or
/// user@host:port, where the ":" between the brackets of an IPv6 address do not begin a port; for
/// every other side the number. Without a type an address with an "@" is of type SIP, another one a
/// number.
CallParty ReadCallParty(std::string_view address, std::optional<CallType> type);

/// The address of one side of a call as ReadCallParty reads it.
std::string AddressText(CallParty const& party);

} // namespace CallRecordingUtils

#endif
