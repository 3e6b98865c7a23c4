// One side of a call: its address, and the test against one side of a rule.

#include "matching/CallSide.h"

#include "matching/PatternMatcher.h"

namespace CallRecordingUtils {
namespace {

// Stands for an empty port: in a pattern it accepts every port, in an address it is a character
// that no port of digits accepts.
constexpr std::string_view kAnyPort = "*";

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

std::string_view CallSide::Address(CallType ruleType) {
    bool const hasNumber = type_ == CALL_TYPE_NUMBER || type_ == CALL_TYPE_NUMBER2;
    if (hasNumber || (type_ == CALL_TYPE_SIP && ruleType == CALL_TYPE_ANY))
        return params_.user;
    if (type_ != CALL_TYPE_SIP)
        return {};
    if (sipAddress_.empty()) {
        sipAddress_.append(params_.user).append("@").append(params_.host).append(":");
        sipAddress_.append(params_.port.empty() ? kAnyPort : params_.port);
    }
    return sipAddress_;
}

/// Returns the pattern with a port, or the empty text when it has no "@". A pattern that names a
/// port is returned as it stands: user, "@", host, ":" and port put together again are the same
/// text.
std::string_view CallSide::SipPattern(std::string_view stored) {
    std::string_view port;
    SipAddress parts;
    std::string_view const rest = SplitPort(stored, port);
    if (!SplitSipAddress(rest, parts))
        return {};
    if (!port.empty())
        return stored;
    sipPattern_.assign(rest).append(":").append(kAnyPort);
    return sipPattern_;
}

bool CallSide::Satisfies(std::string_view pattern, CallType ruleType) {
    if (type_ != ruleType && ruleType != CALL_TYPE_ANY)
        return false;
    std::string_view const wanted = ruleType == CALL_TYPE_SIP ? SipPattern(pattern) : pattern;
    return !wanted.empty() && PatternMatcher(Address(ruleType), wanted).Matches();
}

} // namespace CallRecordingUtils
