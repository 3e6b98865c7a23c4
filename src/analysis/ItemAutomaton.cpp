// Builds the automaton of an item list: a branch for each item, then all branches at once, and
// states that do the same made one.

#include "analysis/ItemAutomaton.h"

#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "analysis/NumberRange.h"
#include "language/Items.h"

namespace CallRecordingUtils {
namespace {

/// The branches of all items. They begin at one place, the first.
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
                return Unreadable::OddItems;
            if (places_.size() > mostPlaces_)
                return Unreadable::TooLarge;
            at = end + 1;
        }
        return std::nullopt;
    }

    SymbolClasses Classes() const {
        SymbolClasses classes;
        for (Place const& place : places_)
            for (Edge const& edge : place.edges)
                classes.Divide(edge.symbols);
        return classes;
    }

    void Follow(PlaceSet const& from, Symbol symbol, PlaceSet& to) const {
        to.clear();
        for (std::uint32_t const place : from)
            for (Edge const& edge : places_[place].edges)
                if (edge.symbols.Has(symbol))
                    to.push_back(edge.to);
        std::sort(to.begin(), to.end());
        to.erase(std::unique(to.begin(), to.end()), to.end());
    }

    bool Accepts(PlaceSet const& places) const {
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
            for (std::size_t i = 0; i < kTextSymbols; ++i)
                if (auto const symbol = static_cast<Symbol>(i); c == '?' || c == ByteOf(symbol))
                    symbols.Add(symbol);
            std::uint32_t const next = AddPlace();
            places_[place].edges.push_back({symbols, next});
            place = next;
        }
        places_[place].marks |= mark;
    }

    void AddLetters(char above, char last, Mark mark) {
        Edge edge{{}, AddPlace()};
        for (std::size_t i = 0; i < kTextSymbols; ++i) {
            auto const symbol = static_cast<Symbol>(i);
            char const c = ByteOf(symbol);
            if (IsLetter(c) && above < c && c <= last)
                edge.symbols.Add(symbol);
        }
        places_[0].edges.push_back(edge);
        places_[edge.to].marks |= mark;
    }

    void AddNumbers(NumberRange const& range, Mark mark) {
        std::map<NumberRange::State, std::uint32_t> known{{NumberRange::kStart, 0}};
        std::vector<NumberRange::State> open{NumberRange::kStart};
        while (!open.empty() && places_.size() <= mostPlaces_) {
            NumberRange::State const from = open.back();
            open.pop_back();
            std::map<std::uint32_t, SymbolSet> edges;
            for (std::size_t i = 0; i < kTextSymbols; ++i) {
                auto const symbol = static_cast<Symbol>(i);
                auto const to = range.Next(from, ByteOf(symbol));
                if (!to)
                    continue;
                auto const [place, isNew] = known.emplace(*to, 0);
                if (isNew) {
                    place->second = AddPlace();
                    places_.back().marks |= range.Accepts(*to) ? mark : kNothing;
                    open.push_back(*to);
                }
                edges[place->second].Add(symbol);
            }
            for (auto const& [to, symbols] : edges)
                places_[known[from]].edges.push_back({symbols, to});
        }
    }

    std::size_t const mostPlaces_;
    std::vector<Place> places_;
};

/// Makes states that accept the same one. The ways lead from lower to higher states only, state 0
/// apart, so one pass from the last to the first does it.
ItemAutomaton Smallest(Dfa const& dfa, std::uint32_t start) {
    std::size_t const width = dfa.classes.Count();
    ItemAutomaton result{{dfa.classes, {}, {}}, 0};
    std::map<std::pair<std::vector<std::uint32_t>, bool>, std::uint32_t> known;
    std::vector<std::uint32_t> merged(dfa.Count(), 0);
    auto const add = [&](std::size_t state) {
        std::vector<std::uint32_t> row;
        for (std::size_t i = 0; i < width; ++i)
            row.push_back(merged[dfa.next[state * width + i]]);
        auto const count = static_cast<std::uint32_t>(result.dfa.Count());
        auto const [place, isNew] = known.emplace(std::pair(row, dfa.isAccepting[state]), count);
        if (isNew) {
            result.dfa.next.insert(result.dfa.next.end(), row.begin(), row.end());
            result.dfa.isAccepting.push_back(dfa.isAccepting[state]);
        }
        merged[state] = place->second;
    };
    add(0);
    for (std::size_t state = dfa.Count(); --state > 0;)
        add(state);
    result.start = merged[start];
    return result;
}

} // namespace

Reading<ItemAutomaton> ReadItemList(std::string_view list, std::size_t mostBytes) {
    constexpr std::size_t kBytesForPlace = 100;
    Branches branches(mostBytes / kBytesForPlace);
    if (auto const problem = branches.AddList(list))
        return {{}, problem};
    SubsetConstruction<Branches> subsets(branches, mostBytes);
    std::uint32_t const start = subsets.StateOf({0});
    if (!subsets.Run())
        return {{}, Unreadable::TooLarge};
    return {Smallest(subsets.Result(), start), std::nullopt};
}

} // namespace CallRecordingUtils
