// Puts together what rules compare.

#include "calls/SideTexts.h"

#include "language/Characters.h"
#include "model/SipAddress.h"

namespace CallRecordingUtils {
namespace {

/// Stands for a byte that was dialled and that patterns hold as the code of another one. It is no
/// literal, so only a wildcard takes it.
constexpr char kMatchesNoCode = '\x01';

/// Bytes that are codes of others. (A "#" is not one of these: the code of "*" is the same to
/// rules. A ":" stays because it divides host and port, and IPv6 addresses are made of it.)
constexpr std::string_view kForeignCodes = "^@%";

/// Returns text with the codes that patterns store for escaped characters. "," has a code where no
/// "@" follows; in a SIP address its code would end the user.
std::string Coded(std::string_view text, bool hasCodeOfComma) {
    std::string coded(text);
    for (char& c : coded) {
        std::size_t const row = kEscapedCharacters.find(c);
        if (row != std::string_view::npos && (c != ',' || hasCodeOfComma))
            c = kEscapeCodes[row];
        else if (Contains(kForeignCodes, c))
            c = kMatchesNoCode;
    }
    return coded;
}

} // namespace

SideTexts::SideTexts(Party const& party) : userSize_(party.user.size()), isParty_(true) {
    bool const hasHost = !party.host.empty();
    whole_ = Coded(party.user, !hasHost);
    shown_ = party.user;
    if (hasHost) {
        whole_.append("@").append(Coded(party.host, false)).append(":").append(party.port);
        shown_.append("@").append(party.host).append(":").append(party.port);
    }
    sees_[CALL_TYPE_NUMBER] = party.HasNumber();
    sees_[CALL_TYPE_SIP] = hasHost;
}

SideTexts::SideTexts(std::string_view address, CallType type)
    : userSize_(address.size()), isParty_(false) {
    CallParty const read = ReadCallParty(address, type);
    if (type == CALL_TYPE_SIP) {
        CallSide const side(read.params, type);
        whole_ = side.Address();
        userSize_ = side.User().size();
    } else {
        whole_ = address;
    }
    shown_ = whole_;
    sees_[static_cast<std::size_t>(type)] = true;
}

std::optional<std::string_view> SideTexts::SeenBy(CallType ruleType) const {
    if (ruleType == CALL_TYPE_ANY)
        return User(whole_);
    if (ruleType < CALL_TYPE_NUMBER || ruleType > CALL_TYPE_ANY || !Sees(ruleType))
        return std::nullopt;
    return ruleType == CALL_TYPE_SIP ? std::string_view(whole_) : User(whole_);
}

std::string_view SideTexts::Shown(CallType ruleType) const {
    return ruleType == CALL_TYPE_SIP ? std::string_view(shown_) : User(shown_);
}

SideTexts::TypedSides SideTexts::Typed() const {
    TypedSides typed{};
    for (CallType const type : {CALL_TYPE_NUMBER, CALL_TYPE_SIP, CALL_TYPE_NUMBER2})
        if (Sees(type))
            typed.sides[typed.count++] = {type, *SeenBy(type), User(whole_)};
    if (typed.count == 0) // Rule sides of type any alone see it.
        typed.sides[typed.count++] = {CALL_TYPE_ANY, User(whole_), User(whole_)};
    return typed;
}

} // namespace CallRecordingUtils
