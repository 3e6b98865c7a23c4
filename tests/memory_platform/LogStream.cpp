/// @file
/// The log of the in-memory platform: one more file in memory.

#include <LogStream.h>

#include <cstdio>
#include <cstdlib>

#include "Memory.h"

// The declared members have other uses on a plain host. Here the pending text is not needed, for
// entries go to the file at once, and its place takes the file's path.
LogStream::LogStream(char const* name, bool /*option1*/, bool /*option2*/, int /*option3*/,
                     int /*option4*/, unsigned /*option5*/, bool /*option6*/)
    : mFile(-1), mHighestLevel(0) {
    char const* const directory = std::getenv("QUVA_LOG_PATH");
    char const* const level = std::getenv("QUVA_LOG_LEVEL");
    mPending = std::string(directory != nullptr ? directory : "") + name;
    mHighestLevel = level != nullptr ? std::strtoul(level, nullptr, 10) : 0;
    TheMemory().files[mPending];
}

LogStream::~LogStream() = default;

void LogStream::TRACE(unsigned char level, char const* format, va_list& arguments,
                      unsigned char /*option*/) {
    char entry[1024];
    if (level <= mHighestLevel && std::vsnprintf(entry, sizeof entry, format, arguments) > 0)
        TheMemory().files[mPending] += entry;
}

void LogStream::Flush() {
    static_cast<void>(mFile); // No file is open, and nothing waits.
}

void GetLogLevel(bool* isEnabled, bool* /*unused*/) {
    *isEnabled = std::getenv("QUVA_LOG_LEVEL") != nullptr;
}
