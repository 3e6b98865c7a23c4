// The twin of a rule in a list.

#ifndef CALLRECORDINGCTL_EDIT_TWINS_H
#define CALLRECORDINGCTL_EDIT_TWINS_H

#include <cstddef>

#include "Rules.h"

namespace callrecordingctl {

/// The index of the first rule that mirrors the one at index. Throws a Failure when there is none.
std::size_t FindTwin(RuleList const& rules, std::size_t index);

} // namespace callrecordingctl

#endif
