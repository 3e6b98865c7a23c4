// Writes the library's own trace lines.

#ifndef DATABASE_TRACE_H
#define DATABASE_TRACE_H

#include <callrecordingutils/CCallRecordingDB.h>
#include <callrecordingutils/CCallRecordingLogger.h>

namespace CallRecordingUtils {

constexpr unsigned char kTraceFailure = 0;
constexpr unsigned char kTraceNotice = 3;

/// Writes message, which brings its own line end, when there is a logger. message is a fixed text
/// without conversions.
inline void Trace(unsigned char level, char const* message) noexcept {
    if (CCallRecordingDB::mpLogger != nullptr)
        CCallRecordingDB::mpLogger->TRACE(level, true, "%s", message);
}

} // namespace CallRecordingUtils

#endif
