// The twin of a rule in a list.

#ifndef ADMINISTRATION_EDIT_TWINS_H
#define ADMINISTRATION_EDIT_TWINS_H

#include <cstddef>

#include "model/RuleList.h"

namespace CallRecordingUtils {

/// The index of the first rule that mirrors the one at index. Throws an Error when there is none.
std::size_t FindTwin(RuleList const& rules, std::size_t index);

} // namespace CallRecordingUtils

#endif
