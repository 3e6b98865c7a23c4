// The twin of a rule: the rule with the same sides exchanged.

#ifndef ADMINISTRATION_EDIT_TWINS_H
#define ADMINISTRATION_EDIT_TWINS_H

#include <cstddef>

#include "model/RuleList.h"

namespace CallRecordingUtils {

/// Returns the index of the first rule that mirrors the one at index. Throws an Error if there is
/// none.
std::size_t FindTwin(RuleList const& rules, std::size_t index);

} // namespace CallRecordingUtils

#endif
