// The rules by which a replay decides: those of now, of some time, or for each call those of its
// time.

#ifndef CALLRECORDINGCTL_COMMANDS_REPLAYRULES_H
#define CALLRECORDINGCTL_COMMANDS_REPLAYRULES_H

#include <optional>
#include <string>

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
    /// edits: only with the other parts is it known which are between the first and the last call.
    ReplayState StateOf(CountedCalls&& calls, bool isPart);

  private:
    void ReadNow();
    void ReadTimeline(bool isNeeded);
    void AskOfTheirTime();
    void AskAsOf(std::string const& when);
    std::optional<RuleList> RulesIn(RuleEra const& era);
    EditFacts EditOf(std::size_t era, bool withChanges);
    void AddEdits(ReplayState& state, bool isPart);

    std::string const path_;
    ReplayFacts facts_;
    std::optional<RuleTimeline> timeline_;
    std::optional<RulesOverTime> rules_;
};

} // namespace callrecordingctl

#endif
