// The rules in the states that a history tells of.

#ifndef CALLRECORDINGCTL_COMMANDS_RULESOFSTATES_H
#define CALLRECORDINGCTL_COMMANDS_RULESOFSTATES_H

#include <cstddef>
#include <list>
#include <optional>
#include <string>
#include <vector>

#include "Names.h"
#include "administration/edit/Changes.h"
#include "administration/history/History.h"

namespace callrecordingctl {

/// Reads the states, each once if they are asked for in their order, or in the reverse.
class RulesOfStates {
  public:
    RulesOfStates(History& history, std::string const& current);

    /// The rules of the state with this digest, or null if they are not known. They are valid until
    /// two other states have been asked for.
    RuleList const* Find(std::string const& digest) { return Read(digest).Rules(); }

    /// What the edit changed, as valid as that; empty if it is not known.
    std::vector<Change> ChangesOf(HistoryEntry const& entry);

    /// Why that is not known, or empty.
    std::string ProblemOf(HistoryEntry const& entry);

    /// How many rules there were afterwards; 0 if that is not known.
    std::size_t CountAfter(HistoryEntry const& entry);

  private:
    struct State {
        std::string digest;
        std::optional<RuleList> rules;
        std::string problem;

        RuleList const* Rules() const { return rules ? &*rules : nullptr; }
    };

    State const& Read(std::string const& digest);
    void Load(State& state);

    History& history_;
    std::string const& current_;
    std::string const currentDigest_;
    std::list<State> states_; // Those that were asked for last, the last one first.
};

} // namespace callrecordingctl

#endif
