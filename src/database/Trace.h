// The library's own trace lines.

#ifndef DATABASE_TRACE_H
#define DATABASE_TRACE_H

namespace CallRecordingUtils {

enum class TraceLine {
    // Notices.
    kAlreadyLoaded,
    kLoaded,
    kReloading,
    // Failures.
    kLoadingFailed,
    kSavingFailed,
    kAddingFailed,
    kModifyingFailed,
    kRemovingFailed,
    kReorderingFailed,
    kStateFailed
};

/// Writes the line when there is a logger.
void Trace(TraceLine line) noexcept;

} // namespace CallRecordingUtils

#endif
