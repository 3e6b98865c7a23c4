// Finds what is well formed and yet surely not meant.

#ifndef VALIDATION_SUSPICIONS_H
#define VALIDATION_SUSPICIONS_H

#include <optional>
#include <string_view>

#include <callrecordingutils/PatternValidation.h>

namespace CallRecordingUtils {

/// Returns the first thing in entry, a pattern in the entry form, that takes more or less than it
/// seems to. Only what is certain counts; groups of more than a thousand bytes are not looked at.
/// REQUIRES: entry is well formed.
std::optional<PatternProblem> FindSuspicion(std::string_view entry);

} // namespace CallRecordingUtils

#endif
