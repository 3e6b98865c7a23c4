// The places at which the matcher can be in a pattern: a nondeterministic automaton.

#ifndef ANALYSIS_PATTERNPLACES_H
#define ANALYSIS_PATTERNPLACES_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "analysis/ItemAutomaton.h"
#include "language/Elements.h"

namespace CallRecordingUtils {

/// The characters that element, which takes one character of an address, takes.
SymbolSet SymbolsOf(std::string_view pattern, Element const& element);

/// Reads a pattern as the matcher does, well formed or not: a character outside the language ends
/// the match with success, and a group that is not closed matches nothing.
class PatternPlaces {
  public:
    /// mostBytes bounds what is held. With odd items the places match all that the pattern does,
    /// and may match more; when the pattern is too large, they mean nothing.
    std::optional<Unreadable> Read(std::string_view pattern, std::size_t mostBytes);

    /// Divides classes by what the places tell apart.
    void Divide(SymbolClasses& classes) const;
    PlaceSet Start() const;
    /// Appends to to, in order, where symbol leads from the places that begin at begin.
    void Follow(PlaceSet::const_iterator begin, PlaceSet::const_iterator end, Symbol symbol,
                PlaceSet& to) const;
    bool Accepts(PlaceSet::const_iterator begin, PlaceSet::const_iterator end) const;

  private:
    enum class Kind : std::uint8_t { Step, AnyRun, InGroup, Stop, Unclosed, End };

    struct Place {
        Kind kind;
        std::uint32_t which;   // Step: of sets_. InGroup: of groups_.
        std::uint32_t state;   // InGroup: of the group's automaton.
        std::uint32_t first;   // InGroup: the place of the group's state 0.
        std::uint32_t end = 0; // InGroup, accepting: the place behind the group.
    };

    std::optional<Unreadable> Add(std::string_view pattern, Element const& element,
                                  std::size_t mostBytes);
    std::optional<Unreadable> AddGroup(std::string_view items, std::size_t mostBytes);
    void AddStep(SymbolSet const& symbols);
    void AddAnything();
    std::optional<Unreadable> Problem() const;
    std::size_t Bytes() const;
    void Enter(std::uint32_t at, PlaceSet& places) const;
    void LeaveGroups(std::size_t from, PlaceSet& places) const;
    void Tidy(std::size_t from, PlaceSet& places) const;

    std::vector<Place> places_;
    std::vector<SymbolSet> sets_; // Each once.
    std::vector<ItemAutomaton> groups_;
    bool hasOddItems_ = false;
};

} // namespace CallRecordingUtils

#endif
