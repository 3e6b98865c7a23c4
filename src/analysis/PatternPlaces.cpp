// Reads a pattern into places, and follows them.

#include "analysis/PatternPlaces.h"

#include <algorithm>

#include "matching/ItemList.h"

namespace CallRecordingUtils {

SymbolSet SymbolsOf(std::string_view pattern, Element const& element) {
    if (element.construct == Construct::Literal)
        return SymbolSet::Of(SymbolOf(pattern[element.begin]));
    SymbolSet symbols;
    for (std::size_t i = 0; i < kTextSymbols; ++i) {
        auto const symbol = static_cast<Symbol>(i);
        char const c = ByteOf(symbol);
        Consumed consumed;
        if (element.construct == Construct::AnyOne ||
            AdmitsCandidate(ItemsOf(pattern, element), {&c, 1}, consumed))
            symbols.Add(symbol);
    }
    return symbols;
}

std::optional<Unreadable> PatternPlaces::Read(std::string_view pattern, std::size_t mostBytes) {
    for (std::size_t at = 0; at < pattern.size();) {
        Element const element = ReadElement(pattern, at);
        if (auto const problem = Add(pattern, element, mostBytes))
            return problem;
        if (Bytes() > mostBytes)
            return Unreadable::TooLarge;
        if (element.end == element.begin) // The reading ends here.
            return Problem();
        at = element.end;
    }
    places_.push_back({Kind::End, 0, 0, 0});
    return Problem();
}

std::optional<Unreadable> PatternPlaces::Problem() const {
    return hasOddItems_ ? std::optional(Unreadable::OddItems) : std::nullopt;
}

std::size_t PatternPlaces::Bytes() const {
    std::size_t bytes = places_.size() * sizeof(Place);
    for (ItemAutomaton const& group : groups_)
        bytes += group.dfa.next.size() * sizeof(std::uint32_t);
    return bytes;
}

std::optional<Unreadable> PatternPlaces::Add(std::string_view pattern, Element const& element,
                                             std::size_t mostBytes) {
    switch (element.construct) {
    case Construct::AnyRun: places_.push_back({Kind::AnyRun, 0, 0, 0}); break;
    case Construct::Stop: places_.push_back({Kind::Stop, 0, 0, 0}); break;
    case Construct::Unclosed: places_.push_back({Kind::Unclosed, 0, 0, 0}); break;
    case Construct::Range: return AddGroup(ItemsOf(pattern, element), mostBytes);
    default: AddStep(SymbolsOf(pattern, element)); break;
    }
    return std::nullopt;
}

void PatternPlaces::AddStep(SymbolSet const& symbols) {
    auto known = std::find(sets_.begin(), sets_.end(), symbols);
    if (known == sets_.end())
        known = sets_.insert(known, symbols);
    places_.push_back({Kind::Step, static_cast<std::uint32_t>(known - sets_.begin()), 0, 0});
}

std::optional<Unreadable> PatternPlaces::AddGroup(std::string_view items, std::size_t mostBytes) {
    auto reading = ReadItemList(items, mostBytes);
    if (reading.problem == Unreadable::OddItems) {
        AddAnything();
        return std::nullopt;
    }
    if (reading.problem)
        return reading.problem;
    ItemAutomaton const& group = reading.automaton;
    auto const which = static_cast<std::uint32_t>(groups_.size());
    auto const first = static_cast<std::uint32_t>(places_.size());
    auto const size = static_cast<std::uint32_t>(group.dfa.Count());
    // The first place is that of the start. State 0 needs none, so the start takes its number.
    places_.push_back({Kind::InGroup, which, group.start, first});
    for (std::uint32_t state = 1; state < size; ++state)
        places_.push_back(
            {Kind::InGroup, which, state, first, group.dfa.isAccepting[state] ? first + size : 0});
    groups_.push_back(std::move(reading.automaton));
    return std::nullopt;
}

/// In the place of a group that cannot be read: one character at least.
void PatternPlaces::AddAnything() {
    hasOddItems_ = true;
    SymbolSet symbols;
    for (std::size_t symbol = 0; symbol < kTextSymbols; ++symbol)
        symbols.Add(static_cast<Symbol>(symbol));
    AddStep(symbols);
    places_.push_back({Kind::AnyRun, 0, 0, 0});
}

void PatternPlaces::Divide(SymbolClasses& classes) const {
    for (SymbolSet const& set : sets_)
        classes.Divide(set);
    for (ItemAutomaton const& group : groups_)
        classes.Divide(group.dfa.classes);
}

PlaceSet PatternPlaces::Start() const {
    PlaceSet start;
    Enter(0, start);
    Tidy(0, start);
    return start;
}

void PatternPlaces::Follow(PlaceSet::const_iterator begin, PlaceSet::const_iterator end,
                           Symbol symbol, PlaceSet& to) const {
    std::size_t const from = to.size();
    for (auto at = begin; at != end; ++at) {
        Place const& place = places_[*at];
        switch (place.kind) {
        case Kind::Step:
            if (sets_[place.which].Has(symbol))
                Enter(*at + 1, to);
            break;
        case Kind::AnyRun:
        case Kind::Stop: Enter(*at, to); break;
        case Kind::InGroup:
            if (auto const next = groups_[place.which].dfa.Next(place.state, symbol))
                to.push_back(place.first + next);
            break;
        case Kind::Unclosed:
        case Kind::End: break;
        }
    }
    LeaveGroups(from, to);
    Tidy(from, to);
}

bool PatternPlaces::Accepts(PlaceSet::const_iterator begin, PlaceSet::const_iterator end) const {
    return std::any_of(
        begin, end,
        [this](std::uint32_t at) {
            return places_[at].kind == Kind::End || places_[at].kind == Kind::Stop;
        });
}

/// Adds the place at to places, and those that are reached from it without a character.
void PatternPlaces::Enter(std::uint32_t at, PlaceSet& places) const {
    for (; places_[at].kind == Kind::AnyRun; ++at)
        places.push_back(at);
    places.push_back(at);
}

/// Where a candidate can end, the reading goes on behind the group as well.
void PatternPlaces::LeaveGroups(std::size_t from, PlaceSet& places) const {
    for (std::size_t i = from; i < places.size(); ++i)
        if (std::uint32_t const end = places_[places[i]].end)
            Enter(end, places);
}

/// Of a set, what lies before its last "*" is left out: the "*" takes all that would be taken
/// there.
void PatternPlaces::Tidy(std::size_t from, PlaceSet& places) const {
    auto const begin = places.begin() + static_cast<std::ptrdiff_t>(from);
    std::sort(begin, places.end());
    places.erase(std::unique(begin, places.end()), places.end());
    auto const isAnyRun = [this](std::uint32_t at) {
        return places_[at].kind == Kind::AnyRun || places_[at].kind == Kind::Stop;
    };
    auto const last =
        std::find_if(places.rbegin(), places.rend() - static_cast<std::ptrdiff_t>(from), isAnyRun);
    if (last != places.rend() - static_cast<std::ptrdiff_t>(from))
        places.erase(places.begin() + static_cast<std::ptrdiff_t>(from), last.base() - 1);
}

} // namespace CallRecordingUtils
