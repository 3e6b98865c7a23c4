// Reads patterns of single characters, and follows what addresses they can be in.

#include "analysis/PlainSide.h"

#include <string>

#include "analysis/PatternPlaces.h"
#include "analysis/SideAutomaton.h"

namespace CallRecordingUtils {
namespace {

using Zones = unsigned; // A bit for each.

constexpr Zones BitOf(Zone zone) {
    return 1U << static_cast<unsigned>(zone);
}

/// The zones behind a symbol of step that is read in one of zones.
Zones Behind(CallKind calls, Zones zones, SymbolSet const& step) {
    Zones behind = 0;
    for (auto zone = Zone::NumberBegin; zone <= Zone::NoPort;
         zone = static_cast<Zone>(static_cast<int>(zone) + 1)) {
        if ((zones & BitOf(zone)) == 0)
            continue;
        step.ForEach([&](Symbol symbol) {
            if (auto const next = ZoneBehind(calls, zone, symbol))
                behind |= BitOf(*next);
        });
        if (zone == Zone::PortBegin && calls == CallKind::Typed && step.Has(kBelowDigits))
            behind |= BitOf(Zone::NoPort);
    }
    return behind;
}

SymbolSet SymbolsOfNumbers() {
    SymbolSet symbols;
    for (std::size_t i = 0; i < kTextSymbols; ++i)
        if (IsOfNumber(static_cast<Symbol>(i)))
            symbols.Add(static_cast<Symbol>(i));
    return symbols;
}

bool MayEnd(Zones zones) {
    for (auto zone = Zone::NumberBegin; zone <= Zone::NoPort;
         zone = static_cast<Zone>(static_cast<int>(zone) + 1))
        if ((zones & BitOf(zone)) != 0 && MayEndIn(zone))
            return true;
    return false;
}

bool AcceptsAddresses(PlainSide const& side, CallType type, CallKind calls) {
    if (calls == CallKind::Typed && type != CALL_TYPE_SIP)
        return true;
    Zones zones = BitOf(FirstZone(type == CALL_TYPE_SIP ? kSip : kNumber));
    for (SymbolSet const& step : side.steps)
        zones = Behind(calls, zones, step);
    return side.isOpen ? zones != 0 : MayEnd(zones);
}

/// Of literals alone, which are the text of one address, the last ":" and the last "@" before it
/// are the marks.
void TellMarks(std::vector<SymbolSet>& steps) {
    bool hasPort = false;
    bool hasHost = false;
    for (auto step = steps.rbegin(); step != steps.rend(); ++step)
        if (step->Has(kPortMark)) {
            *step = SymbolSet::Of(hasPort ? kColon : kPortMark);
            hasPort = true;
        } else if (step->Has(kHostMark)) {
            *step = SymbolSet::Of(!hasPort || hasHost ? kAt : kHostMark);
            hasHost = hasPort;
        }
}

} // namespace

std::optional<PlainSide> ReadPlainSide(RuleSide const& side, CallKind calls) {
    static SymbolSet const kNumbers = SymbolsOfNumbers();
    auto const type = static_cast<CallType>(side.type);
    bool const isSip = type == CALL_TYPE_SIP;
    bool const seesNumbersOnly = calls == CallKind::Parties && type == CALL_TYPE_NUMBER;
    std::string const pattern = ComparedPattern(side);
    PlainSide plain{};
    bool isLiteral = true;
    for (std::size_t at = 0; at < pattern.size();) {
        Element const element = ReadElement(pattern, at);
        at = element.end;
        plain.isOpen = element.construct == Construct::AnyRun && at == pattern.size();
        if (plain.isOpen)
            break;
        if (!IsStep(element.construct))
            return std::nullopt;
        isLiteral = isLiteral && element.construct == Construct::Literal;
        SymbolSet step = SymbolsOf(pattern, element);
        if (isSip && step.Has(kAt))
            step.Add(kHostMark);
        if (isSip && step.Has(kColon))
            step.Add(kPortMark);
        if (seesNumbersOnly)
            step &= kNumbers;
        plain.acceptsNothing = plain.acceptsNothing || step.IsEmpty();
        plain.steps.push_back(step);
    }
    if (plain.steps.empty())
        return std::nullopt;
    if (isSip && isLiteral && !plain.isOpen)
        TellMarks(plain.steps);
    plain.acceptsNothing = plain.acceptsNothing || !AcceptsAddresses(plain, type, calls);
    if (plain.isOpen && seesNumbersOnly) {
        plain.isOpen = false;
        plain.loop = kNumbers;
    }
    if (!isSip)
        plain.ends.Add(kHostMark);
    return plain;
}

} // namespace CallRecordingUtils
