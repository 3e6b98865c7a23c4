/// @file
/// The log file of a plain host: a file that only ever grows at its end.

#include "LogStream.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <optional>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "StringUtils.h"

namespace {

/// Entries that are not flushed are handed to the file once they have grown to this size.
constexpr std::size_t MOST_PENDING = 65536;

/// The number in QUVA_LOG_LEVEL, the greatest there is for a greater one; nothing when it is no
/// number.
std::optional<unsigned long> LogLevel() {
    char const* const level = std::getenv("QUVA_LOG_LEVEL");
    if (level == nullptr || !StringUtils::IsNumeric(level, false, false))
        return std::nullopt;
    return std::strtoul(level, nullptr, 10);
}

std::string LogPath(char const* name) {
    char const* const directory = std::getenv("QUVA_LOG_PATH");
    return std::string(directory != nullptr ? directory : "/var/log/") + name;
}

int OpenLog(std::string const& path) {
    // Not to wait: a log that stands still must not hold up a call.
    int const file =
        open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, 0644);
    struct stat status {};
    if (file >= 0 && (fstat(file, &status) != 0 || S_ISFIFO(status.st_mode))) {
        // A pipe whose reader goes away would end the process with a signal.
        close(file);
        return -1;
    }
    return file;
}

/// Appends format, expanded with arguments, to text.
void AppendFormatted(std::string& text, char const* format, va_list& arguments) {
    va_list measured;
    va_copy(measured, arguments);
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): va_copy has initialised it.
    int const length = std::vsnprintf(nullptr, 0, format, measured);
    va_end(measured);
    if (length < 0)
        return;
    std::size_t const begin = text.size();
    std::size_t const size = static_cast<std::size_t>(length);
    text.resize(begin + size + 1); // vsnprintf adds a NUL.
    va_list expanded;
    va_copy(expanded, arguments);
    std::vsnprintf(&text[begin], size + 1, format, expanded);
    va_end(expanded);
    text.resize(begin + size);
}

/// Writes text as far as the file takes it.
void WriteLog(int file, std::string_view text) {
    constexpr int MOST_INTERRUPTIONS = 10;
    for (int interruptions = 0; !text.empty() && interruptions < MOST_INTERRUPTIONS;) {
        ssize_t const count = write(file, text.data(), text.size());
        if (count > 0)
            text.remove_prefix(static_cast<std::size_t>(count));
        else if (count < 0 && errno == EINTR)
            ++interruptions;
        else
            return;
    }
}

} // namespace

LogStream::LogStream(char const* name, bool /*option1*/, bool /*option2*/, int /*option3*/,
                     int /*option4*/, unsigned /*option5*/, bool /*option6*/)
    : mFile(-1), mHighestLevel(ULONG_MAX) {
    try {
        // Without a level nothing is dropped: whether to trace at all is GetLogLevel's to say.
        mHighestLevel = LogLevel().value_or(ULONG_MAX);
        mFile = OpenLog(LogPath(name));
    } catch (std::exception const&) {
        // Without memory there is no log.
    }
}

LogStream::~LogStream() {
    Flush();
    if (mFile >= 0)
        close(mFile);
}

void LogStream::TRACE(unsigned char level, char const* format, va_list& arguments,
                      unsigned char /*option*/) {
    if (mFile < 0 || level > mHighestLevel)
        return;
    try {
        AppendFormatted(mPending, format, arguments);
    } catch (std::exception const&) {
        return; // No memory: the entry is lost.
    }
    if (mPending.size() >= MOST_PENDING)
        Flush();
}

void LogStream::Flush() {
    if (mFile >= 0)
        WriteLog(mFile, mPending);
    mPending.clear();
}

void GetLogLevel(bool* isEnabled, bool* /*unused*/) {
    if (isEnabled != nullptr)
        *isEnabled = LogLevel().has_value();
}
