// Builds the automaton of a rule side.

#include "analysis/SideAutomaton.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "analysis/PatternPlaces.h"
#include "model/SipAddress.h"

namespace CallRecordingUtils {
namespace {

/// The places of a pattern, and with them the part of the address that is being read. The first
/// number of a set is the zone, or one of two that say that all is settled; the places follow.
class SidePlaces {
  public:
    static constexpr std::uint32_t kAccepted = 100; // Whatever follows.
    static constexpr std::uint32_t kNoAddress = 101;

    SidePlaces(PatternPlaces const& pattern, CallType type, CallKind calls)
        : pattern_(pattern), type_(type), calls_(calls) {}

    PlaceSet Start(AddressKind kind) const {
        PlaceSet start = pattern_.Start();
        start.insert(start.begin(), NumberOf(FirstZone(kind)));
        return start;
    }

    SymbolClasses Classes() const {
        static SymbolClasses const kTyped = StructureOf(CallKind::Typed);
        static SymbolClasses const kParties = StructureOf(CallKind::Parties);
        SymbolClasses classes = calls_ == CallKind::Typed ? kTyped : kParties;
        pattern_.Divide(classes);
        return classes;
    }

    void Follow(PlaceSet const& from, Symbol symbol, PlaceSet& to) const {
        to.clear();
        if (from.empty())
            return;
        if (from[0] >= kAccepted) {
            to = from;
            return;
        }
        auto const next = ZoneBehind(calls_, static_cast<Zone>(from[0]), symbol);
        if (!next)
            to.push_back(kNoAddress);
        else if (symbol == kHostMark && type_ != CALL_TYPE_SIP)
            to.assign(AcceptsText(from) ? 1 : 0, kAccepted);
        else if (!SeesNumbersOnly() || IsOfNumber(symbol))
            FollowPattern(from, symbol, *next, to);
    }

    bool Accepts(PlaceSet const& set) const {
        if (set.empty() || set[0] >= kAccepted)
            return !set.empty() && set[0] == kAccepted;
        return MayEnd(set) && AcceptsText(set);
    }
    bool MayEnd(PlaceSet const& set) const {
        return !set.empty() && set[0] < kAccepted && MayEndIn(static_cast<Zone>(set[0]));
    }

  private:
    /// What the zones of an address tell apart.
    static SymbolClasses StructureOf(CallKind calls) {
        SymbolClasses classes;
        for (Zone const zone : {Zone::NumberBegin, Zone::PlusNumber, Zone::UserBegin,
                                Zone::PlusUser, Zone::HostBegin, Zone::PortBegin}) {
            std::map<std::optional<Zone>, SymbolSet> behind;
            SymbolSet numbers;
            for (std::size_t i = 0; i < kSymbols; ++i) {
                auto const symbol = static_cast<Symbol>(i);
                behind[ZoneBehind(calls, zone, symbol)].Add(symbol);
                if (calls == CallKind::Parties && IsOfNumber(symbol))
                    numbers.Add(symbol);
            }
            for (auto const& [zoneBehind, symbols] : behind)
                classes.Divide(symbols);
            classes.Divide(numbers);
        }
        return classes;
    }

    bool SeesNumbersOnly() const {
        return calls_ == CallKind::Parties && type_ == CALL_TYPE_NUMBER;
    }

    /// Whether something has been read of a part matters for parties only.
    std::uint32_t NumberOf(Zone zone) const {
        bool const isBegin =
            zone == Zone::NumberBegin || zone == Zone::UserBegin || zone == Zone::HostBegin;
        if (calls_ == CallKind::Typed && isBegin)
            zone = zone == Zone::NumberBegin ? Zone::Number
                   : zone == Zone::UserBegin ? Zone::User
                                             : Zone::Host;
        return static_cast<std::uint32_t>(zone);
    }

    bool AcceptsText(PlaceSet const& set) const {
        auto const zone = static_cast<Zone>(set[0]);
        bool const isEmpty = zone == Zone::NumberBegin || zone == Zone::UserBegin;
        return !(isEmpty && SeesNumbersOnly()) && pattern_.Accepts(set.begin() + 1, set.end());
    }

    void FollowPattern(PlaceSet const& from, Symbol symbol, Zone next, PlaceSet& to) const {
        to.push_back(NumberOf(next));
        pattern_.Follow(from.begin() + 1, from.end(), TextSymbolOf(symbol), to);
        if (to.size() == 1)
            to.clear();
    }

    PatternPlaces const& pattern_;
    CallType const type_;
    CallKind const calls_;
};

using Subsets = SubsetConstruction<SidePlaces>;

/// The states from which an address can end accepted, or rejected.
std::vector<bool> Reaching(Subsets const& subsets, SidePlaces const& places, bool accepted) {
    Dfa const& dfa = subsets.Result();
    std::size_t const width = dfa.classes.Count();
    std::vector<bool> reaching(dfa.Count(), false);
    reaching[0] = !accepted;
    for (std::uint32_t state = 1; state < dfa.Count(); ++state) {
        bool const mayEnd = places.MayEnd(subsets.SetOf(state));
        reaching[state] = subsets.SetOf(state)[0] == SidePlaces::kAccepted
                              ? accepted
                              : mayEnd && dfa.isAccepting[state] == accepted;
    }
    // Most ways lead to higher states, so that few rounds from the last to the first do.
    for (bool isChanged = true; isChanged;) {
        isChanged = false;
        for (std::size_t state = dfa.Count(); --state > 0;)
            for (std::size_t i = 0; i < width && !reaching[state]; ++i)
                if (reaching[dfa.next[state * width + i]])
                    reaching[state] = isChanged = true;
    }
    return reaching;
}

void AddState(Dfa& dfa, std::vector<std::uint32_t> const& row, bool isAccepting) {
    dfa.next.insert(dfa.next.end(), row.begin(), row.end());
    dfa.isAccepting.push_back(isAccepting);
}

/// An automaton of the two states that every one has.
SideAutomaton WithoutStates(SymbolClasses const& classes) {
    SideAutomaton side{{classes, {}, {}}, {}};
    std::size_t const width = classes.Count();
    AddState(side.dfa, std::vector<std::uint32_t>(width, SideAutomaton::kNone), false);
    AddState(side.dfa, std::vector<std::uint32_t>(width, SideAutomaton::kEvery), true);
    return side;
}

/// States from which nothing, or everything, is accepted become the two that say so.
SideAutomaton Finish(Subsets const& subsets, SidePlaces const& places,
                     std::array<std::uint32_t, kAddressKinds> const& start) {
    Dfa const& dfa = subsets.Result();
    std::size_t const width = dfa.classes.Count();
    std::vector<bool> const canAccept = Reaching(subsets, places, true);
    std::vector<bool> const canReject = Reaching(subsets, places, false);
    std::vector<std::uint32_t> renamed(dfa.Count(), SideAutomaton::kNone);
    std::uint32_t count = 2;
    for (std::size_t state = 1; state < dfa.Count(); ++state)
        if (canAccept[state])
            renamed[state] = canReject[state] ? count++ : SideAutomaton::kEvery;
    SideAutomaton side = WithoutStates(dfa.classes);
    std::vector<std::uint32_t> row(width);
    for (std::size_t state = 1; state < dfa.Count(); ++state) {
        if (renamed[state] < 2)
            continue;
        for (std::size_t i = 0; i < width; ++i)
            row[i] = renamed[dfa.next[state * width + i]];
        AddState(side.dfa, row, dfa.isAccepting[state]);
    }
    for (std::size_t kind = 0; kind < kAddressKinds; ++kind)
        side.start[kind] = renamed[start[kind]];
    return side;
}

SideAutomaton EverySide(CallType type, CallKind calls) {
    SideAutomaton side = WithoutStates({});
    for (AddressKind const kind : {kNumber, kSip, kNumber2})
        if (LooksAt(type, kind, calls))
            side.start[kind] = SideAutomaton::kEvery;
    return side;
}

} // namespace

bool LooksAt(CallType type, AddressKind kind, CallKind calls) {
    if (calls == CallKind::Parties)
        return kind == kSip
                   ? type == CALL_TYPE_SIP || type == CALL_TYPE_NUMBER || type == CALL_TYPE_ANY
                   : kind == kNumber && (type == CALL_TYPE_NUMBER || type == CALL_TYPE_ANY);
    return type == CALL_TYPE_ANY || type == (kind == kNumber ? CALL_TYPE_NUMBER
                                             : kind == kSip  ? CALL_TYPE_SIP
                                                             : CALL_TYPE_NUMBER2);
}

std::string ComparedPattern(RuleSide const& side) {
    if (side.type != CALL_TYPE_SIP)
        return std::string(side.pattern);
    auto const pieces = SplitSipAddress(side.pattern);
    if (!pieces)
        return {};
    return std::string(side.pattern) + (pieces->HasPort() ? "" : pieces->port ? "*" : ":*");
}

Reading<SideAutomaton> ReadSide(RuleSide const& side, CallKind calls, std::size_t mostBytes) {
    auto const type = static_cast<CallType>(side.type);
    std::string const pattern = ComparedPattern(side);
    if (pattern.empty())
        return {WithoutStates({}), std::nullopt};
    PatternPlaces patternPlaces;
    auto const problem = patternPlaces.Read(pattern, mostBytes);
    if (problem == Unreadable::TooLarge)
        return {EverySide(type, calls), problem};
    SidePlaces const places(patternPlaces, type, calls);
    Subsets subsets(places, mostBytes);
    std::array<std::uint32_t, kAddressKinds> start{};
    for (AddressKind const kind : {kNumber, kSip, kNumber2})
        if (LooksAt(type, kind, calls))
            start[kind] = subsets.StateOf(places.Start(kind));
    if (!subsets.Run())
        return {EverySide(type, calls), Unreadable::TooLarge};
    return {Finish(subsets, places, start), problem};
}

} // namespace CallRecordingUtils
