// The library's own trace lines.

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

/// Writes the line when there is a logger.
void Trace(TraceLine line) noexcept;

} // namespace CallRecordingUtils

#endif
