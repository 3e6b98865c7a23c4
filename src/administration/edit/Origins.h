// Which rule of one list is which of another.

#ifndef ADMINISTRATION_EDIT_ORIGINS_H
#define ADMINISTRATION_EDIT_ORIGINS_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "model/RuleList.h"

namespace CallRecordingUtils {

/// A text that two rules share only when all their fields are equal.
std::string AllOf(Rule const& rule);

/// By the place of a rule after, its place before.
using Origins = std::vector<std::optional<std::size_t>>;

/// Rules that are equal belong together, of several the first to the first; then those that only
/// have other identifiers, as after a move; then those with the same one, which were changed.
Origins OriginsOf(RuleList const& before, RuleList const& after);

/// By place: whether the rule kept its order among the others. As many as can be did.
std::vector<bool> KeptOrder(Origins const& origins);

} // namespace CallRecordingUtils

#endif
