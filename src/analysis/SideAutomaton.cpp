// Builds the automaton of a rule side.

#include "analysis/SideAutomaton.h"

#include <algorithm>
#include <map>
#include <string>
#include <utility>

#include "language/Elements.h"
#include "matching/ItemList.h"
#include "model/SipAddress.h"
#include "validation/SidePattern.h"

namespace CallRecordingUtils {
namespace {

using Places = std::vector<std::uint32_t>;

/// The places at which the matcher can stand in a pattern, and where each symbol leads from there.
class PatternPlaces {
  public:
    std::optional<Unreadable> Read(std::string_view pattern, std::size_t mostPlaces) {
        for (std::size_t at = 0; at < pattern.size();) {
            Element const element = ReadElement(pattern, at);
            if (element.construct == Construct::Unclosed)
                return Unreadable::OutsideTheLanguage;
            if (auto const problem = Add(pattern, element, mostPlaces))
                return problem;
            if (places_.size() > mostPlaces)
                return Unreadable::TooLarge;
            if (element.construct == Construct::Stop)
                return std::nullopt;
            at = element.end;
        }
        places_.push_back({Kind::End, {}, {}, 0});
        return std::nullopt;
    }

    Places Start() const {
        Places start;
        Enter(0, start);
        Tidy(start);
        return start;
    }

    void Follow(Places const& from, Symbol symbol, Places& to) const {
        to.clear();
        for (std::uint32_t const at : from) {
            Place const& place = places_[at];
            switch (place.kind) {
            case Kind::Step:
                if (place.symbols.Has(symbol))
                    Enter(at + 1, to);
                break;
            case Kind::AnyRun:
            case Kind::Stop: Enter(at, to); break;
            case Kind::InGroup:
                if (place.next[symbol] != 0)
                    to.push_back(place.group + place.next[symbol]);
                break;
            case Kind::AfterGroup:
            case Kind::End: break;
            }
        }
        LeaveGroups(to);
        Tidy(to);
    }

    bool Accepts(Places const& places) const {
        return std::any_of(
            places.begin(), places.end(),
            [this](std::uint32_t at) {
                return places_[at].kind == Kind::End || places_[at].kind == Kind::Stop;
            });
    }

  private:
    enum class Kind { Step, AnyRun, InGroup, AfterGroup, Stop, End };

    struct Place {
        Kind kind;
        SymbolSet symbols;                        // Step
        std::array<std::uint32_t, kSymbols> next; // InGroup: states of the group.
        std::uint32_t group;                      // InGroup: the place of its state 0.
        std::uint32_t end = 0;                    // InGroup, accepting: the place behind it.
    };

    std::optional<Unreadable> Add(std::string_view pattern, Element const& element,
                                  std::size_t mostPlaces) {
        switch (element.construct) {
        case Construct::AnyRun: places_.push_back({Kind::AnyRun, {}, {}, 0}); break;
        case Construct::Range: return AddGroup(ItemsOf(pattern, element), mostPlaces);
        case Construct::Stop: places_.push_back({Kind::Stop, {}, {}, 0}); break;
        default: AddStep(pattern, element); break;
        }
        return std::nullopt;
    }

    void AddStep(std::string_view pattern, Element const& element) {
        SymbolSet symbols;
        for (std::size_t i = 0; i < kSymbols; ++i) {
            auto const symbol = static_cast<Symbol>(i);
            char const c = ByteOf(symbol);
            Consumed consumed;
            if (element.construct == Construct::AnyOne || c == pattern[element.begin] ||
                (element.construct == Construct::Set &&
                 AdmitsCandidate(ItemsOf(pattern, element), {&c, 1}, consumed)))
                symbols.Add(symbol);
        }
        places_.push_back({Kind::Step, symbols, {}, 0});
    }

    std::optional<Unreadable> AddGroup(std::string_view items, std::size_t mostPlaces) {
        auto const [automaton, problem] = ReadItemList(items, mostPlaces);
        if (problem)
            return problem;
        auto const first = static_cast<std::uint32_t>(places_.size());
        auto const size = static_cast<std::uint32_t>(automaton.states.size());
        // The first place is that of the start. State 0 needs none, so the start takes its number.
        for (std::uint32_t state = 0; state < size; ++state) {
            ItemAutomaton::State const& from =
                automaton.states[state == 0 ? automaton.start : state];
            places_.push_back({Kind::InGroup, {}, from.next, first});
            if (state != 0 && from.isAccepting)
                places_.back().end = first + size;
        }
        return std::nullopt;
    }

    /// Adds the place at to places, and those that are reached from it without a character.
    void Enter(std::uint32_t at, Places& places) const {
        places.push_back(at);
        if (places_[at].kind == Kind::AnyRun)
            Enter(at + 1, places);
    }

    /// Where a candidate can end, the reading goes on behind the group as well.
    void LeaveGroups(Places& places) const {
        for (std::size_t i = 0; i < places.size(); ++i)
            if (std::uint32_t const end = places_[places[i]].end)
                Enter(end, places);
    }

    void Tidy(Places& places) const {
        std::sort(places.begin(), places.end());
        places.erase(std::unique(places.begin(), places.end()), places.end());
        auto const isAnyRun = [this](std::uint32_t at) {
            return places_[at].kind == Kind::AnyRun || places_[at].kind == Kind::Stop;
        };
        auto const last = std::find_if(places.rbegin(), places.rend(), isAnyRun);
        if (last != places.rend())
            places.erase(places.begin(), last.base() - 1);
    }

    std::vector<Place> places_;
};

/// Which part of an address is being read, as far as it decides what can follow.
enum class AddressPart { Number, OnlyUser, User, Host, PortBegin, Port };

/// A ":" in the host leads here to PortBegin and back, since the last one begins the port.
std::optional<AddressPart> PartBehind(AddressPart part, Symbol symbol) {
    switch (part) {
    case AddressPart::Number:
    case AddressPart::OnlyUser: return part;
    case AddressPart::User: return symbol == kAt ? AddressPart::Host : part;
    default: break;
    }
    if (symbol == kAt)
        return std::nullopt;
    if (symbol == kColon)
        return AddressPart::PortBegin;
    return part == AddressPart::Host ? part : AddressPart::Port;
}

bool MayEnd(AddressPart part) {
    return part == AddressPart::Number || part == AddressPart::Port;
}

class Builder {
  public:
    Builder(PatternPlaces const& pattern, std::size_t mostStates)
        : pattern_(pattern), mostStates_(mostStates), states_(2) {
        states_[SideAutomaton::kEvery].next.fill(SideAutomaton::kEvery);
        states_[SideAutomaton::kEvery].isAccepting = true;
        keys_.resize(2);
    }

    /// Returns the state in which the reading of an address begins with part.
    std::uint32_t Start(AddressPart part) { return Find(part, pattern_.Start())->second; }

    bool Run() {
        Places to;
        for (std::size_t state = 2; state < states_.size(); ++state) {
            for (std::size_t i = 0; i < kSymbols; ++i) {
                std::uint32_t const next = Next(*keys_[state], static_cast<Symbol>(i), to);
                states_[state].next[i] = next;
            }
            if (states_.size() > mostStates_ || held_ > mostStates_ * kPlacesForState)
                return false;
        }
        return true;
    }

    /// States from which nothing, or everything, is accepted become the two that say so.
    SideAutomaton Finish(std::array<std::uint32_t, kAddressKinds> const& start) const {
        std::vector<bool> const canAccept = Reaching(true);
        std::vector<bool> const canReject = Reaching(false);
        std::vector<std::uint32_t> renamed(states_.size(), SideAutomaton::kNone);
        renamed[SideAutomaton::kEvery] = SideAutomaton::kEvery;
        SideAutomaton result{{states_[0], states_[1]}, {}};
        for (std::size_t state = 2; state < states_.size(); ++state) {
            if (canAccept[state] && !canReject[state])
                renamed[state] = SideAutomaton::kEvery;
            if (!canAccept[state] || !canReject[state])
                continue;
            renamed[state] = static_cast<std::uint32_t>(result.states.size());
            result.states.push_back(states_[state]);
        }
        for (std::size_t state = 2; state < result.states.size(); ++state)
            for (std::uint32_t& next : result.states[state].next)
                next = next == kNever ? SideAutomaton::kNone : renamed[next];
        for (std::size_t kind = 0; kind < start.size(); ++kind)
            result.start[kind] = renamed[start[kind]];
        return result;
    }

  private:
    using Key = std::pair<AddressPart, Places>;
    static constexpr std::uint32_t kNever = ~std::uint32_t{0}; // No address goes on like this.

    using Known = std::pair<Key const, std::uint32_t>;

    Known const* Find(AddressPart part, Places const& places) {
        auto const [known, isNew] =
            ids_.emplace(Key(part, places), static_cast<std::uint32_t>(states_.size()));
        if (isNew) {
            held_ += places.size();
            states_.push_back({{}, MayEnd(part) && pattern_.Accepts(places)});
            keys_.push_back(&known->first);
        }
        return &*known;
    }

    std::uint32_t Next(Key const& from, Symbol symbol, Places& to) {
        if (from.first == AddressPart::OnlyUser && symbol == kAt)
            return pattern_.Accepts(from.second) ? SideAutomaton::kEvery : SideAutomaton::kNone;
        auto const part = PartBehind(from.first, symbol);
        if (!part)
            return kNever;
        pattern_.Follow(from.second, symbol, to);
        if (to.empty())
            return SideAutomaton::kNone;
        // Most symbols lead where the one before did.
        if (last_ == nullptr || last_->first.first != *part || last_->first.second != to)
            last_ = Find(*part, to);
        return last_->second;
    }

    /// The states from which an address can end accepted, or rejected.
    std::vector<bool> Reaching(bool accepted) const {
        std::vector<bool> reaching(states_.size(), false);
        reaching[accepted ? SideAutomaton::kEvery : SideAutomaton::kNone] = true;
        for (std::size_t state = 2; state < states_.size(); ++state)
            reaching[state] = MayEnd(keys_[state]->first) && states_[state].isAccepting == accepted;
        // Most ways lead to higher states, so that few rounds from the last to the first do.
        for (bool isChanged = true; isChanged;) {
            isChanged = false;
            for (std::size_t state = states_.size(); --state > 1;)
                if (!reaching[state] && LeadsToOne(states_[state], reaching))
                    reaching[state] = isChanged = true;
        }
        return reaching;
    }

    static bool LeadsToOne(SideAutomaton::State const& state, std::vector<bool> const& those) {
        return std::any_of(
            state.next.begin(), state.next.end(),
            [&those](std::uint32_t next) { return next != kNever && those[next]; });
    }

    PatternPlaces const& pattern_;
    std::size_t const mostStates_;
    std::map<Key, std::uint32_t> ids_;
    Known const* last_ = nullptr;
    std::vector<Key const*> keys_; // Of ids_, by state.
    std::size_t held_ = 0;         // Places in all of them.
    std::vector<SideAutomaton::State> states_;
};

SideAutomaton Nothing() {
    SideAutomaton::State none{{}, false};
    SideAutomaton::State every{{}, true};
    every.next.fill(SideAutomaton::kEvery);
    return {{none, every}, {}};
}

/// A SIP pattern as the matcher reads it: without a port it takes every port.
std::string WithPort(std::string_view pattern) {
    auto const pieces = SplitSipAddress(pattern);
    if (!pieces || pieces->HasPort())
        return std::string(pattern);
    return std::string(pattern) + (pieces->port ? "*" : ":*");
}

} // namespace

Reading<SideAutomaton> ReadSide(RuleSide const& side, std::size_t mostStates) {
    auto const type = static_cast<CallType>(side.type);
    if (ExplainStored(std::string(side.pattern), type))
        return {Nothing(), Unreadable::OutsideTheLanguage};
    if (side.pattern.empty())
        return {Nothing(), std::nullopt};
    PatternPlaces places;
    std::string const text =
        type == CALL_TYPE_SIP ? WithPort(side.pattern) : std::string(side.pattern);
    if (auto const problem = places.Read(text, mostStates))
        return {Nothing(), problem};
    Builder builder(places, mostStates);
    std::array<std::uint32_t, kAddressKinds> start{};
    if (type == CALL_TYPE_NUMBER || type == CALL_TYPE_ANY)
        start[kNumber] = builder.Start(AddressPart::Number);
    if (type == CALL_TYPE_NUMBER2 || type == CALL_TYPE_ANY)
        start[kNumber2] = builder.Start(AddressPart::Number);
    if (type == CALL_TYPE_SIP || type == CALL_TYPE_ANY)
        start[kSip] =
            builder.Start(type == CALL_TYPE_SIP ? AddressPart::User : AddressPart::OnlyUser);
    if (!builder.Run())
        return {Nothing(), Unreadable::TooLarge};
    return {builder.Finish(start), std::nullopt};
}

} // namespace CallRecordingUtils
