/// @file
/// A log on the C library's files, where the plain host's log is, so that the tests find it.

#ifndef SECOND_PLATFORM_LOGSTREAM_H
#define SECOND_PLATFORM_LOGSTREAM_H

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "Faults.h"

class LogStream {
  public:
    LogStream(std::string const& name, bool, bool, int, int, unsigned, bool) {
        char const* const directory = std::getenv("QUVA_LOG_PATH");
        mFile = std::fopen(((directory != nullptr ? directory : "/var/log/") + name).c_str(), "a");
    }
    ~LogStream() {
        if (mFile != nullptr)
            std::fclose(mFile);
    }
    void TRACE(unsigned char level, char const* format, va_list& arguments, unsigned char) {
        char const* const highest = std::getenv("QUVA_LOG_LEVEL");
        if (mFile == nullptr || (highest != nullptr && level > std::atoi(highest)))
            return;
        if (HasFault("raw log"))
            std::fputs(format, mFile);
        else
            std::vfprintf(mFile, format, arguments);
    }
    void Flush() {
        if (mFile != nullptr && !HasFault("late log"))
            std::fflush(mFile);
    }

  private:
    std::FILE* mFile;
};

inline void GetLogLevel(bool* isEnabled, bool*) {
    if (!HasFault("unknown level"))
        *isEnabled = true;
}

#endif
