/// @file
/// A log on the C library's files.

#ifndef SECOND_PLATFORM_LOGSTREAM_H
#define SECOND_PLATFORM_LOGSTREAM_H

#include <cstdarg>
#include <cstdio>

class LogStream {
  public:
    LogStream(char const* name, bool, bool, int, int, unsigned, bool);
    virtual ~LogStream();
    void TRACE(unsigned char level, char const* format, va_list& arguments, unsigned char);
    void Flush();

  private:
    std::FILE* mFile;
};

void GetLogLevel(bool* isEnabled, bool* isVerbose);

#endif
