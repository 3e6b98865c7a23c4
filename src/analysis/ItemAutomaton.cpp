// Builds the automaton of an item list: a branch for each item, then all branches at once, and
// states that do the same made one.

#include "analysis/ItemAutomaton.h"

#include <algorithm>
#include <limits>
#include <map>
#include <string>
#include <tuple>
#include <utility>

#include "common/DecimalNumber.h"
#include "language/Items.h"

namespace CallRecordingUtils {
namespace {

/// Below, equal to, above: how the characters read so far compare with as many of a bound.
int Compare(char left, char right) {
    return static_cast<unsigned char>(left) - static_cast<unsigned char>(right);
}
int Sign(int difference) {
    return (difference > 0) - (difference < 0);
}
int Continue(int sofar, char read, std::string_view bound, std::size_t at) {
    return sofar != 0 || at >= bound.size() ? sofar : Sign(Compare(read, bound[at]));
}

/// Where the reading of a candidate stands in a range of numbers.
struct RangePlace {
    enum Phase { kDigits, kZero, kTail } phase; // kTail: behind the digits that make the value.
    std::size_t length;                         // What is read.
    int toLow;
    int toHigh;

    bool operator<(RangePlace const& other) const {
        return std::tie(phase, length, toLow, toHigh) <
               std::tie(other.phase, other.length, other.toLow, other.toHigh);
    }
};

/// A range of numbers low-high, as a deterministic automaton whose states are RangePlaces.
class NumberRange {
  public:
    NumberRange(std::string_view low, std::string_view high)
        : shortest_(low.size()), longest_(high.size()),
          isFixedWidth_(low.size() >= 2 && low.front() == '0'), low_(Bound(low)),
          high_(Bound(high)), isUnbounded_(!isFixedWidth_ && ParseDecimal(high) == kGreatest) {}

    std::optional<RangePlace> Next(RangePlace const& from, Symbol symbol) const {
        if (from.length == longest_ || from.phase == RangePlace::kZero)
            return std::nullopt;
        char const c = ByteOf(symbol);
        RangePlace to = from;
        ++to.length;
        if (from.phase == RangePlace::kTail)
            return to;
        if (!isFixedWidth_ && !IsDigit(c)) {
            to.phase = RangePlace::kTail;
            return from.length > 0 && HasValue(from) ? std::optional(to) : std::nullopt;
        }
        if (!isFixedWidth_ && from.length == 0 && c == '0')
            to.phase = RangePlace::kZero;
        to.toLow = Continue(from.toLow, c, low_, from.length);
        to.toHigh = Continue(from.toHigh, c, high_, from.length);
        return to;
    }

    bool Accepts(RangePlace const& place) const {
        if (place.length < shortest_ || place.length > longest_ || place.length == 0)
            return false;
        if (isFixedWidth_)
            return place.length == shortest_ && place.toLow >= 0 && place.toHigh <= 0;
        return place.phase == RangePlace::kTail || HasValue(place);
    }

  private:
    static constexpr std::int32_t kGreatest = std::numeric_limits<std::int32_t>::max();

    std::string Bound(std::string_view text) const {
        return isFixedWidth_ ? std::string(text) : std::to_string(ParseDecimal(text));
    }

    /// Whether the digits read so far make a number from low to high. It has no leading zero, so
    /// of two numbers the one with more digits is greater. Beyond 32 bits every number counts as
    /// the greatest; that one is below low never, and above high only when high is less.
    bool HasValue(RangePlace const& place) const {
        bool const isAboveLow =
            place.length > low_.size() || (place.length == low_.size() && place.toLow >= 0);
        bool const isBelowHigh = isUnbounded_ || place.length < high_.size() ||
                                 (place.length == high_.size() && place.toHigh <= 0);
        return isAboveLow && isBelowHigh;
    }

    std::size_t const shortest_;
    std::size_t const longest_;
    bool const isFixedWidth_;
    std::string const low_;  // As texts to compare digit by digit; without leading zeros, where it
    std::string const high_; // is values that are compared.
    bool const isUnbounded_;
};

/// The branches of all items. They begin in one place, the first.
class Branches {
  public:
    enum Mark : std::uint8_t { kNothing = 0, kAccepts = 1, kExcludes = 2 };

    explicit Branches(std::size_t mostPlaces) : mostPlaces_(mostPlaces) { AddPlace(); }

    std::optional<Unreadable> AddList(std::string_view list) {
        for (std::size_t at = 0; at < list.size();) {
            std::size_t const end = EndOfItem(list, at);
            std::string_view const item = list.substr(at, end - at);
            bool const isExclusion = !item.empty() && item.front() == '!';
            if (!AddItem(item.substr(isExclusion ? 1 : 0), isExclusion ? kExcludes : kAccepts))
                return Unreadable::OutsideTheLanguage;
            if (places_.size() > mostPlaces_)
                return Unreadable::TooLarge;
            at = end + 1;
        }
        return std::nullopt;
    }

    void Follow(std::vector<std::uint32_t> const& from, Symbol symbol,
                std::vector<std::uint32_t>& to) const {
        to.clear();
        for (std::uint32_t const place : from)
            for (Edge const& edge : places_[place].edges)
                if (edge.symbols.Has(symbol))
                    to.push_back(edge.to);
        std::sort(to.begin(), to.end());
        to.erase(std::unique(to.begin(), to.end()), to.end());
    }

    bool Admits(std::vector<std::uint32_t> const& places) const {
        unsigned marks = 0;
        for (std::uint32_t const place : places)
            marks |= places_[place].marks;
        return marks == kAccepts;
    }

  private:
    struct Edge {
        SymbolSet symbols;
        std::uint32_t to;
    };
    struct Place {
        std::vector<Edge> edges;
        unsigned marks = kNothing;
    };

    std::uint32_t AddPlace() {
        places_.emplace_back();
        return static_cast<std::uint32_t>(places_.size() - 1);
    }

    /// The forms that the checks of a pattern pass. An item with a character outside the language
    /// accepts nothing.
    bool AddItem(std::string_view item, Mark mark) {
        std::vector<Part> parts;
        bool isForeign = false;
        for (std::size_t at = 0; at < item.size(); at = parts.back().end) {
            parts.push_back(ReadPart(item, at));
            isForeign = isForeign || parts.back().kind == ItemPart::Foreign;
        }
        auto const isOfValue = [](Part const& part) {
            return part.kind == ItemPart::Literals || part.kind == ItemPart::AnyOne ||
                   part.kind == ItemPart::Foreign;
        };
        if (std::all_of(parts.begin(), parts.end(), isOfValue)) {
            if (!isForeign)
                AddValue(item, mark);
            return true;
        }
        return AddRange(parts, mark);
    }

    bool AddRange(std::vector<Part> const& parts, Mark mark) {
        if (parts.size() < 2 || parts[0].kind != ItemPart::Literals)
            return false;
        std::string_view const low = parts[0].text;
        if (parts.size() == 2 && parts[1].kind == ItemPart::ToDigits &&
            std::all_of(low.begin(), low.end(), IsDigit)) {
            AddNumbers(NumberRange(low, parts[1].text), mark);
        } else if (parts[1].kind == ItemPart::ToLetter &&
                   (parts.size() == 2 ||
                    (parts.size() == 3 && parts[2].kind == ItemPart::Literals))) {
            AddLetters(low.front(), parts[1].text.front(), mark);
            // The reading of the list goes on behind the first letter of the high end: what is
            // left of it is one more run of the item, read together with the low end.
            if (parts.size() == 3)
                AddValue(std::string(low).append(low).append(parts[2].text), mark);
        } else {
            return false;
        }
        AddValue(low, mark); // A candidate equal to the low end is accepted whatever the high end.
        return true;
    }

    void AddValue(std::string_view value, Mark mark) {
        if (value.empty())
            return;
        std::uint32_t place = 0;
        for (char const c : value) {
            SymbolSet symbols;
            for (std::size_t symbol = 0; symbol < kSymbols; ++symbol)
                if (c == '?' || c == ByteOf(static_cast<Symbol>(symbol)))
                    symbols.Add(static_cast<Symbol>(symbol));
            std::uint32_t const next = AddPlace();
            places_[place].edges.push_back({symbols, next});
            place = next;
        }
        places_[place].marks |= mark;
    }

    void AddLetters(char above, char last, Mark mark) {
        Edge edge{{}, AddPlace()};
        for (std::size_t symbol = 0; symbol < kSymbols; ++symbol) {
            char const c = ByteOf(static_cast<Symbol>(symbol));
            if (IsLetter(c) && above < c && c <= last)
                edge.symbols.Add(static_cast<Symbol>(symbol));
        }
        places_[0].edges.push_back(edge);
        places_[edge.to].marks |= mark;
    }

    void AddNumbers(NumberRange const& range, Mark mark) {
        std::map<RangePlace, std::uint32_t> known{{{RangePlace::kDigits, 0, 0, 0}, 0}};
        std::vector<RangePlace> open{known.begin()->first};
        while (!open.empty() && places_.size() <= mostPlaces_) {
            RangePlace const from = open.back();
            open.pop_back();
            std::map<std::uint32_t, SymbolSet> edges;
            for (std::size_t symbol = 0; symbol < kSymbols; ++symbol) {
                auto const to = range.Next(from, static_cast<Symbol>(symbol));
                if (!to)
                    continue;
                auto const [place, isNew] = known.emplace(*to, 0);
                if (isNew) {
                    place->second = AddPlace();
                    places_.back().marks |= range.Accepts(*to) ? mark : kNothing;
                    open.push_back(*to);
                }
                edges[place->second].Add(static_cast<Symbol>(symbol));
            }
            for (auto const& [to, symbols] : edges)
                places_[known[from]].edges.push_back({symbols, to});
        }
    }

    std::size_t const mostPlaces_;
    std::vector<Place> places_;
};

/// Makes the branches deterministic: a state is the set of places that the branches can be in.
class Subsets {
  public:
    Subsets(Branches const& branches, std::size_t mostStates)
        : branches_(branches), mostStates_(mostStates) {}

    bool Run() {
        IdOf({}); // State 0.
        IdOf({0});
        std::vector<std::uint32_t> to;
        for (std::size_t state = 0; state < sets_.size(); ++state) {
            for (std::size_t symbol = 0; symbol < kSymbols; ++symbol) {
                branches_.Follow(*sets_[state], static_cast<Symbol>(symbol), to);
                std::uint32_t const next = IdOf(to);
                states_[state].next[symbol] = next;
            }
            if (sets_.size() > mostStates_ || held_ > mostStates_ * kPlacesForState)
                return false;
        }
        return true;
    }

    /// States that accept the same become one. The ways lead from lower to higher states only,
    /// state 0 apart, so one pass from the last to the first does it.
    ItemAutomaton Smallest() const {
        ItemAutomaton result;
        using Key = std::pair<std::array<std::uint32_t, kSymbols>, bool>;
        std::map<Key, std::uint32_t> known;
        std::vector<std::uint32_t> merged(states_.size(), 0);
        result.states.push_back(states_[0]);
        known.emplace(Key(states_[0].next, false), 0);
        for (std::size_t state = states_.size(); --state > 0;) {
            ItemAutomaton::State mapped = states_[state];
            for (std::uint32_t& next : mapped.next)
                next = merged[next];
            auto const count = static_cast<std::uint32_t>(result.states.size());
            auto const [place, isNew] = known.emplace(Key(mapped.next, mapped.isAccepting), count);
            if (isNew)
                result.states.push_back(mapped);
            merged[state] = place->second;
        }
        result.start = merged[1];
        return result;
    }

  private:
    std::uint32_t IdOf(std::vector<std::uint32_t> const& places) {
        auto const [known, isNew] =
            ids_.emplace(places, static_cast<std::uint32_t>(states_.size()));
        if (isNew) {
            held_ += places.size();
            sets_.push_back(&known->first);
            states_.push_back({{}, branches_.Admits(places)});
        }
        return known->second;
    }

    Branches const& branches_;
    std::size_t const mostStates_;
    std::map<std::vector<std::uint32_t>, std::uint32_t> ids_;
    std::vector<std::vector<std::uint32_t> const*> sets_; // Keys of ids_, by state.
    std::size_t held_ = 0;                                // In all of them.
    std::vector<ItemAutomaton::State> states_;
};

} // namespace

Reading<ItemAutomaton> ReadItemList(std::string_view list, std::size_t mostStates) {
    Branches branches(mostStates);
    if (auto const problem = branches.AddList(list))
        return {{}, problem};
    Subsets subsets(branches, mostStates);
    if (!subsets.Run())
        return {{}, Unreadable::TooLarge};
    return {subsets.Smallest(), std::nullopt};
}

} // namespace CallRecordingUtils
