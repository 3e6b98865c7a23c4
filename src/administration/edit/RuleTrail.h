// One rule through the states of a rule file, from the last one back.

#ifndef ADMINISTRATION_EDIT_RULETRAIL_H
#define ADMINISTRATION_EDIT_RULETRAIL_H

#include <cstddef>
#include <cstdint>
#include <optional>

#include "administration/edit/Changes.h"
#include "model/RuleList.h"

namespace CallRecordingUtils {

/// Follows a rule wherever it stood and whatever its identifier was. A rule that was deleted and
/// came back as it had been, by an undo or by hand, is the same one.
class RuleTrail {
  public:
    /// Of the rule that has this identifier in last or, if none has, of the last one that had it.
    RuleTrail(RuleList last, std::int32_t id);

    /// Goes back to the state before. Returns what became of the rule from there on, or nothing if
    /// that step was not about it. The change borrows the rules of the trail and is valid until the
    /// next step.
    std::optional<Change> StepBack(RuleList before);

    /// Whether the rule has been met.
    bool IsFound() const { return place_ || lost_; }

  private:
    bool IsIt(Rule const& gone) const;
    std::optional<Change> Meet(RuleOrigins const& origins);

    RuleList after_, before_;
    std::int32_t id_;
    std::optional<std::size_t> place_; // In before_; nothing while it is not there.
    std::optional<Rule> lost_;         // How it was added after before_.
};

} // namespace CallRecordingUtils

#endif
