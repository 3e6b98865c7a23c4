// Checks one symbol set.

#ifndef VALIDATION_SYMBOLSETCHECK_H
#define VALIDATION_SYMBOLSETCHECK_H

#include <optional>
#include <string_view>

#include "validation/Finding.h"

namespace CallRecordingUtils {

/// Returns the first thing that is wrong with the items of set, a symbol set from its "[" to its
/// "]".
std::optional<Finding> CheckSymbolSet(std::string_view set);

} // namespace CallRecordingUtils

#endif
