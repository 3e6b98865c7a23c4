// Checks one range expression.

#ifndef VALIDATION_RANGECHECK_H
#define VALIDATION_RANGECHECK_H

#include <optional>
#include <string_view>

#include "validation/Finding.h"

namespace CallRecordingUtils {

/// Returns the first thing that is wrong with range, a range expression from its "{" to its "}".
std::optional<Finding> CheckRange(std::string_view range);

} // namespace CallRecordingUtils

#endif
