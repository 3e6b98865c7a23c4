// How sentences name rules.

#ifndef ADMINISTRATION_INSPECTION_RULENAMES_H
#define ADMINISTRATION_INSPECTION_RULENAMES_H

#include <cstddef>
#include <string>
#include <vector>

#include "model/RuleList.h"

namespace CallRecordingUtils {

/// The rules at places by their identifiers: "rule 1", "rules 1, 2 and 3" or, when there are many,
/// "rules 1, 2, 3 and 17 more".
std::string RulesText(RuleList const& rules, std::vector<std::size_t> const& places);

/// rule 5 "abroad": the identifier and, if there is one, the description.
std::string NameOf(Rule const& rule);

} // namespace CallRecordingUtils

#endif
