// The addresses that a side of a call can have, as the automata read them.

#ifndef ANALYSIS_ADDRESS_H
#define ANALYSIS_ADDRESS_H

#include <cstddef>
#include <cstdint>
#include <optional>

#include "analysis/Symbols.h"

namespace CallRecordingUtils {

/// Which calls are asked about.
///
/// Typed: what a telephony process hands to the decision. A side has one call type and one text;
/// that of a SIP address is split at its last ":" and the last "@" before that, or at its last "@"
/// when there is no port.
///
/// Parties: a side is a user, a host and a port, any of them empty, and each side of a rule looks
/// at the part that its type names: type number at the user when that is a number, type any at the
/// user, type sip at user@host:port when there is a host; the second kind of number at nothing.
enum class CallKind { Typed, Parties };

/// The kind of calls that was not asked about.
constexpr CallKind OtherThan(CallKind calls) {
    return calls == CallKind::Typed ? CallKind::Parties : CallKind::Typed;
}

/// The kinds of address, the most usual first. Of parties there are the first two: without and with
/// a host.
enum AddressKind : std::size_t { kNumber, kSip, kNumber2 };
inline constexpr std::size_t kAddressKinds = 3;

/// Which part of an address is being read; Begin: nothing of it has been read. An address of kind
/// kSip is the user, kHostMark, the host, kPortMark, and the port or "*" for an empty one.
enum class Zone : std::uint8_t {
    NumberBegin,
    Number,
    PlusNumber, // Of a party, behind a "+" at the front.
    UserBegin,
    User,
    PlusUser,
    HostBegin,
    Host,
    PortBegin,
    Port,
    NoPort // "*" was read in the place of a port; nothing follows.
};

constexpr Zone FirstZone(AddressKind kind) {
    return kind == kSip ? Zone::UserBegin : Zone::NumberBegin;
}

constexpr bool MayEndIn(Zone zone) {
    return zone <= Zone::PlusNumber || zone >= Zone::Port;
}

constexpr bool IsCapital(Symbol symbol) {
    return ByteOf(symbol) >= 'A' && ByteOf(symbol) <= 'Z';
}

/// A party's user is a number when it consists of these; in patterns "#" stands for "*" as well.
constexpr bool IsOfNumber(Symbol symbol) {
    return symbol <= 9 || ByteOf(symbol) == '+' || ByteOf(symbol) == '#';
}

/// What goes from a party's user that begins with "+": "." and the like. ("%" stands for "-".)
constexpr bool IsSeparator(Symbol symbol) {
    char const c = ByteOf(symbol);
    return c == '.' || c == '(' || c == ')' || c == '%';
}

/// The zone behind symbol; nothing when no address goes on like this. The marks are the last "@"
/// and the last ":" that can be meant, so what is behind them holds none. The host of a party is in
/// lower case and not empty, its port consists of digits, and "@" stands for a "," in a user that
/// has no host behind it.
constexpr std::optional<Zone> ZoneBehind(CallKind calls, Zone zone, Symbol symbol) {
    bool const isParty = calls == CallKind::Parties;
    switch (zone) {
    case Zone::NumberBegin:
        if (symbol >= kTextSymbols)
            return std::nullopt;
        return isParty && zone == Zone::NumberBegin && ByteOf(symbol) == '+' ? Zone::PlusNumber
                                                                             : Zone::Number;
    case Zone::Number:
    case Zone::PlusNumber:
        if (symbol >= kTextSymbols || (zone == Zone::PlusNumber && IsSeparator(symbol)))
            return std::nullopt;
        return zone;
    case Zone::UserBegin:
    case Zone::User:
    case Zone::PlusUser:
        if (symbol == kPortMark || (isParty && symbol == kAt) ||
            (zone == Zone::PlusUser && IsSeparator(symbol)))
            return std::nullopt;
        if (symbol == kHostMark)
            return Zone::HostBegin;
        if (isParty && zone == Zone::UserBegin && ByteOf(symbol) == '+')
            return Zone::PlusUser;
        return zone == Zone::UserBegin ? Zone::User : zone;
    case Zone::HostBegin:
    case Zone::Host:
        if (symbol == kHostMark || symbol == kAt || (isParty && IsCapital(symbol)))
            return std::nullopt;
        if (symbol != kPortMark)
            return Zone::Host;
        if (isParty && zone == Zone::HostBegin)
            return std::nullopt;
        return Zone::PortBegin;
    case Zone::PortBegin:
    case Zone::Port:
        if (symbol >= kTextSymbols || symbol == kColon || (isParty && symbol > 9))
            return std::nullopt;
        return Zone::Port;
    case Zone::NoPort: break;
    }
    return std::nullopt;
}

/// An address of one kind.
struct Address {
    AddressKind kind;
    SymbolText text;
};

/// What the text holds beside the object.
inline std::size_t BytesOf(Address const& address) {
    return address.text.capacity() > SymbolText().capacity() ? address.text.capacity() : 0;
}

} // namespace CallRecordingUtils

#endif
