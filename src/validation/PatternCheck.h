// The check of a whole pattern.

#ifndef VALIDATION_PATTERNCHECK_H
#define VALIDATION_PATTERNCHECK_H

#include <optional>
#include <string>
#include <string_view>

#include "validation/Finding.h"

namespace CallRecordingUtils {

/// Returns the first thing that is wrong with pattern, which is in the entry form, and replaces its
/// escapes by their codes. If pattern contains such a code already, returns that and replaces
/// nothing.
std::optional<Finding> CheckAndStoreEscapes(std::string& pattern);

/// Returns why entry, a pattern in the entry form, is malformed; nothing when it is well formed.
std::optional<PatternRejection> RejectPattern(std::string_view entry);

} // namespace CallRecordingUtils

#endif
