// Puts together what rules compare.

#include "calls/SideTexts.h"

#include <utility>

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

constexpr std::array<char, 256> MakeCodeTable() {
    std::array<char, 256> table{};
    for (std::size_t byte = 0; byte < table.size(); ++byte) {
        char const c = static_cast<char>(byte);
        std::size_t const row = kEscapedCharacters.find(c);
        table[byte] = row != std::string_view::npos ? kEscapeCodes[row]
                      : Contains(kForeignCodes, c)  ? kMatchesNoCode
                                                    : c;
    }
    return table;
}
constexpr std::array<char, 256> kCodes = MakeCodeTable();

/// Replaces bytes by the codes that patterns store for them. "," has one only in
/// a user without a host: elsewhere its code would end the user.
void Encode(std::string& text, bool hasCodeOfComma) {
    for (char& c : text)
        if (c != ',' || hasCodeOfComma)
            c = kCodes[static_cast<unsigned char>(c)];
}

/// What SIP sees of a party with a host; without one the user.
std::string Joined(Party const& party) {
    std::string joined;
    joined.reserve(party.user.size() + party.host.size() + party.port.size() + 2);
    joined = party.user;
    if (!party.host.empty())
        joined.append(1, '@').append(party.host).append(1, ':').append(party.port);
    return joined;
}

} // namespace

SideTexts::SideTexts(Party party)
    : party_(std::move(party)), whole_(Joined(*party_)), userSize_(party_->user.size()) {
    bool const hasHost = !party_->host.empty();
    Encode(whole_, !hasHost);
    if (hasHost)
        whole_[userSize_] = '@'; // It divides user and host; so it is not the code of something.
    sees_[CALL_TYPE_NUMBER] = party_->HasNumber();
    sees_[CALL_TYPE_SIP] = hasHost;
}

SideTexts::SideTexts(std::string_view address, CallType type)
    : whole_(address), userSize_(address.size()) {
    if (type == CALL_TYPE_SIP) {
        CallParty const read = ReadCallParty(address, type);
        CallSide const side(read.params, type);
        whole_ = side.Address();
        userSize_ = side.User().size();
    }
    sees_[static_cast<std::size_t>(type)] = true;
}

std::optional<std::string_view> SideTexts::SeenBy(CallType ruleType) const {
    if (ruleType == CALL_TYPE_ANY)
        return User();
    if (ruleType < CALL_TYPE_NUMBER || ruleType > CALL_TYPE_ANY || !Sees(ruleType))
        return std::nullopt;
    return ruleType == CALL_TYPE_SIP ? std::string_view(whole_) : User();
}

bool SideTexts::Satisfies(std::string_view pattern, CallType ruleType) const {
    auto const text = SeenBy(ruleType);
    return text && CallSide(TypedText{ruleType, *text, *text}).Satisfies(pattern, ruleType);
}

std::string SideTexts::Shown(CallType ruleType) const {
    auto const seen = SeenBy(ruleType);
    if (!seen)
        return "";
    return party_ ? Joined(*party_).substr(0, seen->size()) : std::string(*seen);
}

SideTexts::TypedSides SideTexts::Typed() const {
    TypedSides typed{};
    for (CallType const type : {CALL_TYPE_NUMBER, CALL_TYPE_SIP, CALL_TYPE_NUMBER2})
        if (Sees(type))
            typed.sides[typed.count++] = {type, *SeenBy(type), User()};
    if (typed.count == 0) // Rule sides of type any alone see it.
        typed.sides[typed.count++] = {CALL_TYPE_ANY, User(), User()};
    return typed;
}

} // namespace CallRecordingUtils
