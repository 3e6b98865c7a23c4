// The rules by which a replay decides: those of now, of some time, or for each call those of its
// time.

#ifndef CALLRECORDINGCTL_COMMANDS_REPLAYRULES_H
#define CALLRECORDINGCTL_COMMANDS_REPLAYRULES_H

#include <cstddef>
#include <list>
#include <optional>
#include <string>
#include <vector>

#include "Names.h"
#include "administration/history/RuleTimeline.h"
#include "records/counting/RulesOverTime.h"
#include "records/report/ReplayFacts.h"

namespace callrecordingctl {

class ReplayRules {
  public:
    /// The rule file at path. asOf is empty for its rules of now, "history", or a time; against is
    /// another rule file to compare with, or empty. Throws a Failure.
    ReplayRules(std::string const& path, std::string const& asOf, std::string const& against);
    ReplayRules(ReplayRules const&) = delete;
    ReplayRules& operator=(ReplayRules const&) = delete;

    RulesOverTime const& Here() const { return *rules_; }
    RuleList const* There() const { return facts_.there ? &facts_.there->rules : nullptr; }
    ReplayFacts const& Facts() const { return facts_; }

    /// What was counted by these rules, with all that a report says about them. A part has all
    /// edits and states: only with the other parts is it known which are of the period.
    ReplayState StateOf(CountedCalls&& calls, bool isPart);

  private:
    /// The rules of a state, or why they are not known.
    struct Known {
        std::string digest;
        std::optional<RuleList> rules;
        std::string problem;
    };

    void ReadTimeline(bool isNeeded);
    void AskOfTheirTime();
    void AskAsOf(std::string const& when);
    Known Read(RuleEra const& era);
    Known const& RulesIn(RuleEra const& era);
    EraFacts EraOf(std::size_t era) const;
    EditFacts EditOf(std::size_t era) const;
    std::vector<std::string> ChangesOf(std::size_t era);

    std::string const path_;
    ReplayFacts facts_;
    std::optional<RuleTimeline> timeline_;
    std::vector<Moment> begins_; // Of the eras whose beginning is known, where calls ask for them.
    std::optional<RulesOverTime> rules_;
    std::list<Known> read_; // The states that were asked for last: an edit is about two.
};

} // namespace callrecordingctl

#endif
