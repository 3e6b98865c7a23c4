// Reads a party, one side of a call, out of what a telephone system has. docs/calls.md is the
// description for people.

#ifndef CALLS_PARTY_H
#define CALLS_PARTY_H

#include <string>
#include <string_view>

#include "calls/Cleanings.h"

namespace CallRecordingUtils {

/// One side of a call. Any part may be empty. The bytes are those that were dialled, apart from the
/// host, whose letters are small.
struct Party {
    std::string user;
    std::string host;
    std::string port; ///< Digits; empty where there is no host.

    /// Whether the user is a number: digits, "+", "*" and "#", and at least one of them.
    bool HasNumber() const;
};

inline constexpr std::string_view kDefaultPort = "5060";

/// Reads a party from an address as a SIP header, a URI or a call record has it: 201, 201@pbx:5060,
/// sip:201@pbx;user=phone, "Alice" <sip:201@pbx>;tag=1, tel:+49-30-1234, urn:service:sos, or
/// nothing at all. There is no text that cannot be read. cleanings, unless null, becomes what was
/// left out.
Party ReadParty(std::string_view text, Cleanings* cleanings = nullptr);

/// Reads a party whose parts the telephone system has already separated; user is as it stands in
/// the URI, with its "%XX". An IPv6 host may lack its brackets. A port without a host is ignored.
Party ReadParty(std::string_view user, std::string_view host, std::string_view port);

} // namespace CallRecordingUtils

#endif
