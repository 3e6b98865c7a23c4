// The text of a rule file in which other rules stand.

#ifndef CALLRECORDINGCTL_EDIT_NEWTEXT_H
#define CALLRECORDINGCTL_EDIT_NEWTEXT_H

#include <string>
#include <vector>

#include "edit/Origins.h"
#include "inspection/StoredRules.h"

namespace callrecordingctl {

/// Returns the text that holds rules, in their order, where text, whose rules are stored, held
/// others. A rule with an origin takes its section along, with the comments above it; as it is
/// where the rule is equal, else with its values changed. What stands above a rule that goes stays.
/// Throws a Failure when a rule cannot be stored.
std::string NewText(std::string const& text,
                    std::vector<CallRecordingUtils::StoredRule> const& stored,
                    RuleList const& rules, Origins const& origins);

} // namespace callrecordingctl

#endif
