/// @file
/// The writer of a log file.

#ifndef PLATFORM_LOGSTREAM_H
#define PLATFORM_LOGSTREAM_H

#include <cstdarg>
#include <memory>

inline namespace CallRecordingPlatform {

/// Appends entries to one log file. Not thread-safe: its user serialises. No failure to open or
/// write the file ever reaches the caller, nor does a signal; the entries are lost then. It never
/// waits for the file: a pipe has to have a reader, and room.
///
/// The file may be renamed, removed or truncated at any time, as log rotation does: what is flushed
/// next goes to the file that has the name then, which is made if it is missing; where it cannot be
/// made, to the old one. After a failed write, of this object or of one before it, the next entry
/// begins on a line of its own.
class LogStream {
  public:
    /// Opens, or creates, the file name in the directory that the environment variable
    /// QUVA_LOG_PATH names ("/var/log/" when unset; joined as plain text). The other arguments are
    /// options of a device's log and have no effect on a plain host.
    LogStream(char const* name, bool option1, bool option2, int option3, int option4,
              unsigned option5, bool option6);
    virtual ~LogStream();

    LogStream(LogStream const&) = delete;
    LogStream& operator=(LogStream const&) = delete;

    /// Adds one entry: format expanded with arguments, as vprintf does. An entry whose level is
    /// above the number in QUVA_LOG_LEVEL (read at construction) is dropped. option has no effect
    /// here.
    void TRACE(unsigned char level, char const* format, va_list& arguments, unsigned char option);

    /// Hands everything added so far to the file.
    void Flush();

  private:
    class Impl;
    std::unique_ptr<Impl> mImpl; // None when there was no memory for it.
};

/// Sets *isEnabled to whether tracing is on: the environment variable QUVA_LOG_LEVEL is a number.
/// The second flag of a device has no meaning here and is left alone; both pointers may be null.
void GetLogLevel(bool* isEnabled, bool* unused);

} // namespace CallRecordingPlatform

#endif
