/// @file
/// The trace log "callrecording.log".

#ifndef CALLRECORDINGUTILS_CCALLRECORDINGLOGGER_H
#define CALLRECORDINGUTILS_CCALLRECORDINGLOGGER_H

#include <callrecordingutils/Export.h>
#include <callrecordingutils/platform/LogStream.h>
#include <callrecordingutils/platform/ThreadMutex.h>

namespace CallRecordingUtils {

/// Writes trace lines. There is at most one logger in a process: it is created by
/// CCallRecordingDB::GetInstance, destroyed by CCallRecordingDB::CloseInstance, and reached through
/// CCallRecordingDB::mpLogger or CCallRecordingAssistant::GetLogger. Clients do not construct one.
///
/// Threads: any thread may trace; lines never interleave. Tracing must have ended before the last
/// reference on the database is given back. TRACE writes before it returns, one thread at a time.
/// Not for the child of a fork, where the process has threads: the log may be locked for ever.
///
/// On a plain host tracing is on when the environment variable QUVA_LOG_LEVEL is a number, the
/// highest level that is kept; the file lies in the directory QUVA_LOG_PATH ("/var/log/" when
/// unset). Both are read when the logger is created. The file may be renamed, removed or truncated
/// at any time; tracing goes on in the file that has the name then.
class CCallRecordingLogger {
  public:
    /// Opens the log and asks the platform once whether tracing is on.
    CALLRECORDINGUTILS_EXPORT CCallRecordingLogger();
    CALLRECORDINGUTILS_EXPORT ~CCallRecordingLogger();

    CCallRecordingLogger(CCallRecordingLogger const&) = delete;
    CCallRecordingLogger& operator=(CCallRecordingLogger const&) = delete;

    /// Writes one entry and flushes it; does nothing when tracing is off. level 0 marks failures, 3
    /// notices; the platform's log decides which levels it keeps. With withTimestamp the entry
    /// begins with the local date and time, a tab, ".", the milliseconds and a blank; the time zone
    /// is the one that holds then. format is printf's; it brings its own line end. Never throws: an
    /// entry that cannot be written is lost. Holds off the cancellation of the thread.
    CALLRECORDINGUTILS_EXPORT [[gnu::format(printf, 4, 5)]] void
    TRACE(unsigned char level, bool withTimestamp, char const* format, ...) noexcept;

  private:
    LogStream* mpLogStream; // Owned.
    ThreadMutex mMutex;     // Serialises writing and flushing; nothing is locked while it is held.
    bool mIsEnabled;
};

} // namespace CallRecordingUtils

#endif
