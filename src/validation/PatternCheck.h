// The check of a whole pattern.

#ifndef VALIDATION_PATTERNCHECK_H
#define VALIDATION_PATTERNCHECK_H

#include <optional>
#include <string>
#include <string_view>

#include "validation/Finding.h"

namespace CallRecordingUtils {

/// Returns the first thing wrong with pattern, in the entry form. Replaces the escapes in pattern
/// by their codes, unless pattern holds a code already: that is found before, and nothing is
/// replaced.
std::optional<Finding> CheckAndStoreEscapes(std::string& pattern);

/// Returns why entry, a pattern in the entry form, is malformed; nothing when it is well formed.
std::optional<PatternRejection> RejectPattern(std::string_view entry);

} // namespace CallRecordingUtils

#endif
