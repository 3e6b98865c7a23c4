// One side of a call: its address, and the test against one side of a rule.

#include "matching/CallSide.h"

namespace CallRecordingUtils {
namespace {

// Stands for the empty port of a call: a character that no port of digits in a pattern accepts.
constexpr std::string_view kNoPort = "*";

} // namespace

bool SplitSipAddress(std::string_view address, SipAddress& parts) {
    std::size_t const at = address.rfind('@');
    if (at == std::string_view::npos)
        return false;
    parts = {address.substr(0, at), address.substr(at + 1)};
    return true;
}

std::string_view SplitPort(std::string_view address, std::string_view& port) {
    std::size_t const colon = address.rfind(':');
    if (colon == std::string_view::npos) {
        port = {};
        return address;
    }
    port = address.substr(colon + 1);
    return address.substr(0, colon);
}

CallSide::CallSide(CallParams const& params, CallType type) : type_(type) {
    bool const hasUser =
        type == CALL_TYPE_NUMBER || type == CALL_TYPE_NUMBER2 || type == CALL_TYPE_SIP;
    if (hasUser)
        address_ = addressForAny_ = params.user;
    if (type != CALL_TYPE_SIP)
        return;
    std::string_view const port = params.port.empty() ? kNoPort : params.port;
    sipAddress_.reserve(params.user.size() + params.host.size() + port.size() + 2);
    sipAddress_.append(params.user).append("@").append(params.host).append(":").append(port);
    address_ = sipAddress_;
}

/// A pattern that names a port is matched as it stands: user, "@", host, ":" and port put together
/// again are the same text. To others the port is added.
bool CallSide::SatisfiesSip(std::string_view pattern) const {
    std::string_view port;
    SipAddress parts;
    std::string_view const rest = SplitPort(pattern, port);
    if (!SplitSipAddress(rest, parts))
        return false;
    if (!port.empty())
        return PatternMatcher(address_, pattern).Matches();
    return PatternMatcher(address_, rest, ":*").Matches();
}

// MaySatisfy may judge a SIP pattern as it is stored: with its port added it only becomes longer.
bool CallSide::Satisfies(std::string_view pattern, CallType ruleType) const {
    if (ruleType == CALL_TYPE_SIP)
        return SatisfiesSip(pattern);
    if (pattern == "*") // The commonest side of all.
        return true;
    return PatternMatcher(ruleType == CALL_TYPE_ANY ? addressForAny_ : address_, pattern).Matches();
}

} // namespace CallRecordingUtils
