// The texts of the trace lines. Each stands in its call, since that is where a compiler
// checks formats.

#include "database/Trace.h"

#include <callrecordingutils/CCallRecordingDB.h>
#include <callrecordingutils/CCallRecordingLogger.h>

namespace CallRecordingUtils {

void Trace(TraceLine line) noexcept {
    constexpr unsigned char kFailure = 0;
    constexpr unsigned char kNotice = 3;
    CCallRecordingLogger* const log = CCallRecordingDB::mpLogger;
    if (log == nullptr)
        return;
    switch (line) {
    case TraceLine::kAlreadyLoaded:
        return log->TRACE(kNotice, true, "Call Recording Configuration is already loaded\n");
    case TraceLine::kLoaded:
        return log->TRACE(kNotice, true, "Loaded: Call Recording Configuration\n");
    case TraceLine::kReloading:
        return log->TRACE(kNotice, true, "Reloading: Call Recording Configuration\n");
    case TraceLine::kLoadingFailed:
        return log->TRACE(kFailure, true, "Loading Call Recording configuration failed\n");
    case TraceLine::kSavingFailed:
        return log->TRACE(kFailure, true, "Save currently selected call recording rule failed\n");
    case TraceLine::kAddingFailed:
        return log->TRACE(kFailure, true, "Adding new call recording rule failed\n");
    case TraceLine::kModifyingFailed:
        return log->TRACE(kFailure, true, "Save call recording rule failed\n");
    case TraceLine::kRemovingFailed:
        return log->TRACE(kFailure, true, "Removing recording rule failed\n");
    case TraceLine::kReorderingFailed:
        return log->TRACE(kFailure, true, "Reordering recording rule failed\n");
    case TraceLine::kStateFailed:
        return log->TRACE(kFailure, true, "Set call recording rule state failed\n");
    }
}

} // namespace CallRecordingUtils
