// The check of one range expression.

#ifndef VALIDATION_RANGECHECK_H
#define VALIDATION_RANGECHECK_H

#include <optional>
#include <string_view>

#include "validation/Finding.h"

namespace CallRecordingUtils {

/// Returns the first thing wrong with range, the text of a range expression from "{" to "}".
std::optional<Finding> CheckRange(std::string_view range);

} // namespace CallRecordingUtils

#endif
