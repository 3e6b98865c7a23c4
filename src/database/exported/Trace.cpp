// The texts of the trace lines. Each is written in its call, where the compiler checks it as a
// format.

#include "database/exported/Trace.h"

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
    case TraceLine::AlreadyLoaded:
        return log->TRACE(kNotice, true, "Call Recording Configuration is already loaded\n");
    case TraceLine::Loaded:
        return log->TRACE(kNotice, true, "Loaded: Call Recording Configuration\n");
    case TraceLine::Reloading:
        return log->TRACE(kNotice, true, "Reloading: Call Recording Configuration\n");
    case TraceLine::LoadingFailed:
        return log->TRACE(kFailure, true, "Loading Call Recording configuration failed\n");
    case TraceLine::SavingFailed:
        return log->TRACE(kFailure, true, "Save currently selected call recording rule failed\n");
    case TraceLine::AddingFailed:
        return log->TRACE(kFailure, true, "Adding new call recording rule failed\n");
    case TraceLine::ModifyingFailed:
        return log->TRACE(kFailure, true, "Save call recording rule failed\n");
    case TraceLine::RemovingFailed:
        return log->TRACE(kFailure, true, "Removing recording rule failed\n");
    case TraceLine::ReorderingFailed:
        return log->TRACE(kFailure, true, "Reordering recording rule failed\n");
    case TraceLine::StateFailed:
        return log->TRACE(kFailure, true, "Set call recording rule state failed\n");
    }
}

} // namespace CallRecordingUtils
