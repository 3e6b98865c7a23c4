// The lines that the library itself writes to the trace log.

#ifndef DATABASE_TRACE_H
#define DATABASE_TRACE_H

namespace CallRecordingUtils {

enum class TraceLine {
    // Notices.
    AlreadyLoaded,
    Loaded,
    Reloading,
    // Failures.
    LoadingFailed,
    SavingFailed,
    AddingFailed,
    ModifyingFailed,
    RemovingFailed,
    ReorderingFailed,
    StateFailed
};

/// Writes line to the trace log, if there is a logger.
void Trace(TraceLine line) noexcept;

} // namespace CallRecordingUtils

#endif
