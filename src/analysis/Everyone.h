// Whether a rule takes every call.

#ifndef ANALYSIS_EVERYONE_H
#define ANALYSIS_EVERYONE_H

#include "model/RuleSides.h"

namespace CallRecordingUtils {

/// Whether every call whose addresses are not empty satisfies both sides. False also where that is
/// not known.
bool TakesEveryone(RuleSides const& sides);

} // namespace CallRecordingUtils

#endif
