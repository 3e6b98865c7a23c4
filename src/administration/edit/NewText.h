// The text of a rule file in which other rules stand.

#ifndef ADMINISTRATION_EDIT_NEWTEXT_H
#define ADMINISTRATION_EDIT_NEWTEXT_H

#include <string>
#include <vector>

#include "administration/edit/Origins.h"
#include "administration/inspection/StoredRules.h"

namespace CallRecordingUtils {

/// Returns the text that holds rules, in their order, where text, whose rules are stored, held
/// others. A rule with an origin takes its section along, with the comments above it; as it is
/// where the rule is equal, else with its values changed. What stands above a rule that goes stays.
/// Throws an Error when a rule cannot be stored.
std::string NewText(std::string const& text, std::vector<StoredRule> const& stored,
                    RuleList const& rules, Origins const& origins);

} // namespace CallRecordingUtils

#endif
