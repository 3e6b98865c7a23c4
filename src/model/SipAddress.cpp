// Splits SIP addresses.

#include "model/SipAddress.h"

#include <tuple>

namespace CallRecordingUtils {

std::optional<SipAddress> SplitUserAndHost(std::string_view address) {
    std::size_t const at = address.rfind('@');
    if (at == std::string_view::npos)
        return std::nullopt;
    return SipAddress{address.substr(0, at), address.substr(at + 1), std::nullopt};
}

std::string_view SplitPort(std::string_view address, std::optional<std::string_view>& port) {
    port.reset();
    // Most have no ":", and searching forwards for it is several times as fast as backwards.
    if (address.find(':') == std::string_view::npos)
        return address;
    std::size_t const colon = address.rfind(':');
    port = address.substr(colon + 1);
    return address.substr(0, colon);
}

std::optional<SipAddress> SplitSipAddress(std::string_view address) {
    std::optional<std::string_view> port;
    std::optional<SipAddress> parts = SplitUserAndHost(SplitPort(address, port));
    if (parts)
        parts->port = port;
    return parts;
}

CallParty ReadCallParty(std::string_view address, std::optional<CallType> type) {
    std::optional<SipAddress> parts = SplitUserAndHost(address);
    CallParty party{{}, type.value_or(parts ? CALL_TYPE_SIP : CALL_TYPE_NUMBER)};
    if (party.type != CALL_TYPE_SIP || !parts) {
        party.params.user = address;
        return party;
    }
    std::size_t const colon = parts->host.rfind(':');
    std::size_t const bracket = parts->host.rfind(']');
    bool const hasPort =
        colon != std::string_view::npos && (bracket == std::string_view::npos || colon > bracket);
    party.params.user = parts->user;
    party.params.host = parts->host.substr(0, hasPort ? colon : std::string_view::npos);
    party.params.port = hasPort ? parts->host.substr(colon + 1) : std::string_view();
    return party;
}

std::string AddressText(CallParty const& party) {
    auto const& [user, host, port] =
        std::tie(party.params.user, party.params.host, party.params.port);
    if (party.type != CALL_TYPE_SIP || (host.empty() && port.empty()))
        return user;
    // A ":" in the host, outside of brackets, would be read as the one before the port.
    std::size_t const bracket = host.rfind(']');
    bool const hasColon =
        host.find(':', bracket == std::string::npos ? 0 : bracket) != std::string::npos;
    return user + "@" + host + (port.empty() && !hasColon ? "" : ":" + port);
}

} // namespace CallRecordingUtils
