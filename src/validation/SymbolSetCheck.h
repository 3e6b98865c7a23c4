// The check of one symbol set.

#ifndef VALIDATION_SYMBOLSETCHECK_H
#define VALIDATION_SYMBOLSETCHECK_H

#include <optional>
#include <string_view>

#include "validation/Finding.h"

namespace CallRecordingUtils {

/// Returns the first thing wrong with the items of set, the text of a symbol set from "[" to "]".
std::optional<Finding> CheckSymbolSet(std::string_view set);

} // namespace CallRecordingUtils

#endif
