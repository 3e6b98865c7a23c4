/// @file
/// The trace log "callrecording.log".

#ifndef CALLRECORDINGUTILS_CCALLRECORDINGLOGGER_H
#define CALLRECORDINGUTILS_CCALLRECORDINGLOGGER_H

#include <callrecordingutils/Export.h>
#include <callrecordingutils/platform/LogStream.h>
#include <callrecordingutils/platform/ThreadMutex.h>

namespace CallRecordingUtils {

/// Writes trace lines. A process has at most one logger. CCallRecordingDB::GetInstance creates it
/// and CCallRecordingDB::CloseInstance destroys it; CCallRecordingDB::mpLogger and
/// CCallRecordingAssistant::GetLogger give access to it. Clients do not construct one.
///
/// Threads: any thread may trace; lines are never mixed. TRACE writes before it returns, one thread
/// at a time. No thread may trace any more when the last reference to the database is given back.
/// Not for the child of a fork in a process with threads: the log may be locked for ever.
///
/// On a plain host tracing is on if the environment variable QUVA_LOG_LEVEL is a number, which is
/// the highest level that is written. The file is in the directory QUVA_LOG_PATH, "/var/log/" when
/// that is unset. Both are read when the logger is created. The file may be renamed, removed or
/// truncated at any time; the next line goes to a file of the original name.
class CCallRecordingLogger {
  public:
    /// Opens the log and asks the platform once whether tracing is on.
    CALLRECORDINGUTILS_EXPORT CCallRecordingLogger();
    CALLRECORDINGUTILS_EXPORT ~CCallRecordingLogger();

    CCallRecordingLogger(CCallRecordingLogger const&) = delete;
    CCallRecordingLogger& operator=(CCallRecordingLogger const&) = delete;

    /// Writes one entry and flushes it; does nothing when tracing is off. Level 0 is for failures,
    /// level 3 for notices; the platform's log decides which levels it writes. With withTimestamp
    /// the entry begins with the date and time in the current time zone, a tab, ".", the
    /// milliseconds and a space. format is that of printf and has to end in "\n" itself. Never
    /// throws: an entry that cannot be written is lost. Holds off the cancellation of the thread.
    CALLRECORDINGUTILS_EXPORT [[gnu::format(printf, 4, 5)]] void
    TRACE(unsigned char level, bool withTimestamp, char const* format, ...) noexcept;

  private:
    LogStream* mpLogStream; // Owned.
    ThreadMutex mMutex;     // Held while a line is written; nothing else is locked meanwhile.
    bool mIsEnabled;
};

} // namespace CallRecordingUtils

#endif
