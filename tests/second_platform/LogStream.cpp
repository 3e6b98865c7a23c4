/// @file
/// The log goes where the plain host's goes, so that the tests find it.

#include "LogStream.h"

#include <cstdlib>
#include <string>

#include "Faults.h"

LogStream::LogStream(char const* name, bool, bool, int, int, unsigned, bool) {
    char const* const directory = std::getenv("QUVA_LOG_PATH");
    mFile = std::fopen((std::string(directory != nullptr ? directory : "/var/log/") + name).c_str(),
                       "a");
}

LogStream::~LogStream() {
    if (mFile != nullptr)
        std::fclose(mFile);
}

void LogStream::TRACE(unsigned char level, char const* format, va_list& arguments, unsigned char) {
    char const* const highest = std::getenv("QUVA_LOG_LEVEL");
    if (mFile == nullptr || (highest != nullptr && level > std::atoi(highest)))
        return;
    if (HasFault("raw log"))
        std::fputs(format, mFile);
    else
        std::vfprintf(mFile, format, arguments);
}

void LogStream::Flush() {
    if (mFile != nullptr && !HasFault("late log"))
        std::fflush(mFile);
}

void GetLogLevel(bool* isEnabled, bool*) {
    if (!HasFault("unknown level"))
        *isEnabled = true;
}
