// Turns symbols into the characters of a call.

#include "analysis/ExampleCall.h"

namespace CallRecordingUtils {
namespace {

CallType TypeOf(AddressKind kind) {
    return kind == kNumber ? CALL_TYPE_NUMBER : kind == kSip ? CALL_TYPE_SIP : CALL_TYPE_NUMBER2;
}

/// A character that a party has where rules compare symbol: the code of a character is compared
/// where it was dialled, and a dialled code that is no literal to rules where no code is.
char DialledByte(Symbol symbol) {
    char const byte = ByteOf(symbol);
    if (symbol == kBelowDigits)
        return '^';
    std::size_t const code = kEscapeCodes.find(byte);
    return code == std::string_view::npos ? byte : kEscapedCharacters[code];
}

/// The part of text from begin up to end, the mark behind it.
std::string PartOf(SymbolText const& text, std::size_t begin, std::size_t end, CallKind calls) {
    std::string part;
    for (std::size_t at = begin; at < end; ++at)
        part += calls == CallKind::Parties ? DialledByte(text[at]) : ByteOf(text[at]);
    return part;
}

CallParty PartyOf(Address const& address, CallKind calls) {
    SymbolText const& text = address.text;
    CallParty party{{}, TypeOf(address.kind)};
    std::size_t const host = address.kind == kSip ? text.find(kHostMark) : text.size();
    party.params.user = PartOf(text, 0, host, calls);
    if (address.kind != kSip)
        return party;
    std::size_t const port = text.find(kPortMark);
    party.params.host = PartOf(text, host + 1, port, calls);
    party.params.port = PartOf(text, port + 1, text.size(), calls);
    if (party.params.port == "*") // Stands for an empty one.
        party.params.port.clear();
    return party;
}

} // namespace

ExampleCall ExampleOf(FoundCall const& call, CallKind calls) {
    return {PartyOf(call.caller, calls), PartyOf(call.called, calls)};
}

std::string AddressTextOf(CallParty const& party) {
    if (party.type != CALL_TYPE_SIP)
        return party.params.user;
    std::string text = party.params.user + '@' + party.params.host;
    if (!party.params.port.empty() || text.find(':') != std::string::npos)
        text += ':' + party.params.port;
    return text;
}

} // namespace CallRecordingUtils
