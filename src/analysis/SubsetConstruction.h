// The subset construction of the textbooks (Hopcroft, Motwani, Ullman): the sets of places at which
// a nondeterministic automaton can be become the states of a deterministic one.

#ifndef ANALYSIS_SUBSETCONSTRUCTION_H
#define ANALYSIS_SUBSETCONSTRUCTION_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <utility>
#include <vector>

#include "analysis/SymbolClasses.h"

namespace CallRecordingUtils {

/// A deterministic automaton. State 0 is the one from which nothing is accepted.
struct Dfa {
    SymbolClasses classes;
    std::vector<std::uint32_t> next; // By state, and class of the symbol.
    std::vector<bool> isAccepting;   // By state.

    std::size_t Count() const { return isAccepting.size(); }
    std::uint32_t Next(std::uint32_t state, Symbol symbol) const {
        return next[state * classes.Count() + classes.Of(symbol)];
    }
};

/// At most 2^n sets for n places, and only those are built that some text leads to.
///
/// Places has the places, as numbers:
///     SymbolClasses Classes() const;
///     bool Accepts(PlaceSet const&) const;
///     void Follow(PlaceSet const& from, Symbol, PlaceSet& to) const; // In one order, each once.
using PlaceSet = std::vector<std::uint32_t>;

template <typename Places>
class SubsetConstruction {
  public:
    /// places must outlive the construction. mostBytes bounds what it holds.
    SubsetConstruction(Places const& places, std::size_t mostBytes)
        : places_(places), mostBytes_(mostBytes), dfa_{places.Classes(), {}, {}} {
        StateOf({});
    }

    /// The state that stands for set. Most symbols lead where the one before did.
    std::uint32_t StateOf(PlaceSet const& set) {
        if (dfa_.Count() > 0 && *sets_[last_] == set)
            return last_;
        auto const [known, isNew] = states_.emplace(set, static_cast<std::uint32_t>(dfa_.Count()));
        last_ = known->second;
        if (isNew) {
            bytes_ += kBytesForState + set.size() * sizeof(std::uint32_t) +
                      dfa_.classes.Count() * sizeof(std::uint32_t);
            sets_.push_back(&known->first);
            dfa_.isAccepting.push_back(places_.Accepts(set));
        }
        return last_;
    }
    PlaceSet const& SetOf(std::uint32_t state) const { return *sets_[state]; }

    /// Finds all states that can be reached. Returns false when they need too much memory.
    bool Run() {
        PlaceSet to;
        for (std::uint32_t state = 0; state < dfa_.Count(); ++state)
            for (std::size_t number = 0; number < dfa_.classes.Count(); ++number) {
                places_.Follow(*sets_[state], dfa_.classes.FirstOf(number), to);
                dfa_.next.push_back(StateOf(to));
                if (bytes_ > mostBytes_)
                    return false;
            }
        return true;
    }

    Dfa const& Result() const { return dfa_; }

  private:
    static constexpr std::size_t kBytesForState = 100; // Its nodes in the map and the lists.

    Places const& places_;
    std::size_t const mostBytes_;
    std::size_t bytes_ = 0;
    std::map<PlaceSet, std::uint32_t> states_;
    std::vector<PlaceSet const*> sets_; // Keys of states_, by state.
    std::uint32_t last_ = 0;
    Dfa dfa_;
};

} // namespace CallRecordingUtils

#endif
