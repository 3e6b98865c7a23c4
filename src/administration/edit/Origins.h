// Which rules of one list are rules of another list, possibly changed.

#ifndef ADMINISTRATION_EDIT_ORIGINS_H
#define ADMINISTRATION_EDIT_ORIGINS_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "model/RuleList.h"

namespace CallRecordingUtils {

/// All fields of rule in one text: two rules have the same text only if they are equal.
std::string AllFields(Rule const& rule);

/// For each rule of a list its place in the list before; nothing for a new rule.
using RuleOrigins = std::vector<std::optional<std::size_t>>;

/// Pairs rules that are equal, then those that differ in the identifier only, as after a move, then
/// those with the same identifier, which were changed. Among several candidates the first of one
/// list is paired with the first of the other.
RuleOrigins OriginsOf(RuleList const& before, RuleList const& after);

/// Says for each place whether the rule there kept its order: a largest set of rules whose order
/// among themselves is the one before.
std::vector<bool> KeptOrder(RuleOrigins const& origins);

} // namespace CallRecordingUtils

#endif
