/// @file
/// The log that trace lines are written to, and the question whether to write any.

#ifndef PLATFORM_LOGSTREAM_H
#define PLATFORM_LOGSTREAM_H

#include <cstdarg>
#include <memory>

inline namespace CallRecordingPlatform {

/// Appends entries to one log. The library calls it while calls are decided, so it must not wait
/// for long, and must not throw: if the log cannot be opened or written, entries are lost. Not
/// thread-safe: the library uses an object from one thread at a time, and destroys it as a
/// LogStream.
///
/// Plain host: the log is a file. It may be renamed, removed or truncated at any time, as log
/// rotation does: the next flush goes to the file that has the name then. If there is none, it is
/// created; if that fails, the flush goes to the old file. After a failed write, by this object or
/// an earlier one, the next entry begins on a new line. No write raises a signal or blocks; entries
/// for a pipe without a reader, or without room, are lost.
class LogStream {
  public:
    /// Opens the log name. The library passes "callrecording.log", false, true, 2147483647, 1,
    /// 2048, false; what the options mean is the platform's business.
    ///   Plain host: opens or creates the file name in the directory QUVA_LOG_PATH of the
    ///   environment
    ///   ("/var/log/" if unset; joined as plain text). The options have no effect.
    LogStream(char const* name, bool option1, bool option2, int option3, int option4,
              unsigned option5, bool option6);
    virtual ~LogStream();

    LogStream(LogStream const&) = delete;
    LogStream& operator=(LogStream const&) = delete;

    /// Adds one entry: format, expanded with arguments as by vprintf. The format ends the line, if
    /// it is to end. Level 0 is a failure, 3 a notice. May leave arguments in any state. The
    /// library passes 0 as option.
    ///   Plain host: drops entries whose level is above the number in QUVA_LOG_LEVEL, which is read
    ///   at construction. option has no effect.
    void TRACE(unsigned char level, char const* format, va_list& arguments, unsigned char option);

    /// Writes all entries added so far to the log. The library calls it after each entry.
    void Flush();

  private:
    class Impl;
    std::unique_ptr<Impl> mImpl; // Null if there was no memory for it.
};

/// Sets *isEnabled to whether trace lines are to be written. The library asks once for each logger,
/// and passes null as the second argument.
///   Plain host: they are if QUVA_LOG_LEVEL in the environment is a number. Either pointer may be
///   null; *unused is not touched.
void GetLogLevel(bool* isEnabled, bool* unused);

} // namespace CallRecordingPlatform

#endif
