// Puts the address of one side of a call together, and tests it against one side of a rule.

#include "matching/CallSide.h"

#include <optional>

#include "matching/PatternMatcher.h"
#include "model/SipAddress.h"

namespace CallRecordingUtils {
namespace {

// What an empty port of a call is written as: a character that no digits in a pattern accept.
constexpr std::string_view kNoPort = "*";

} // namespace

CallSide::CallSide(CallParams const& params, CallType type) : type_(type) {
    bool const hasUser =
        type == CALL_TYPE_NUMBER || type == CALL_TYPE_NUMBER2 || type == CALL_TYPE_SIP;
    if (hasUser) {
        // Not one assigned to the other, which would read back what was just written.
        std::string_view const user = params.user;
        addressForAny_ = user;
        address_ = user;
    }
    if (type == CALL_TYPE_SIP)
        PutSipAddressTogether(params);
}

void CallSide::PutSipAddressTogether(CallParams const& params) {
    std::string_view const port = params.port.empty() ? kNoPort : params.port;
    std::size_t const size = params.user.size() + params.host.size() + port.size() + 2;
    char* text = shortSipAddress_.data();
    if (size > shortSipAddress_.size()) {
        longSipAddress_.resize(size);
        text = longSipAddress_.data();
    }
    address_ = {text, size};
    for (std::string_view const part : {std::string_view(params.user), std::string_view("@"),
                                        std::string_view(params.host), std::string_view(":"), port})
        text += part.copy(text, part.size());
}

/// A pattern with a port is matched as it is: split into user, host and port and joined again it
/// would be the same text. A pattern without one takes every port.
bool CallSide::SatisfiesSip(std::string_view pattern) const {
    std::optional<std::string_view> port;
    std::string_view const userAndHost = SplitPort(pattern, port);
    if (!Contains(userAndHost, '@'))
        return false;
    if (port && !port->empty())
        return PatternMatcher(address_, pattern).Matches();
    return PatternMatcher(address_, userAndHost, Ending::AtPort).Matches();
}

bool CallSide::Satisfies(std::string_view pattern, CallType ruleType) const {
    if (pattern.empty() || (ruleType != type_ && ruleType != CALL_TYPE_ANY))
        return false;
    if (ruleType == CALL_TYPE_SIP)
        return SatisfiesSip(pattern);
    if (pattern == "*") // The most common side of all.
        return true;
    std::string_view const address = ruleType == CALL_TYPE_ANY ? addressForAny_ : address_;
    return PatternMatcher(address, pattern).Matches();
}

} // namespace CallRecordingUtils
