// Patterns of a rule side that are well formed and yet surely not meant.

#ifndef CALLRECORDINGCTL_CHECK_SUSPICIONS_H
#define CALLRECORDINGCTL_CHECK_SUSPICIONS_H

#include <optional>
#include <string>

#include "validation/SidePattern.h"

namespace callrecordingctl {

/// What takes more or less than it seems to, at its place in the entry form, if anything does.
/// REQUIRES: stored is well formed.
std::optional<CallRecordingUtils::PatternProblem> SurelyNotMeant(std::string const& stored,
                                                                 CallType type);

} // namespace callrecordingctl

#endif
