/// @file
/// The log file of a plain host: a file that only ever grows at its end.

#include "LogStream.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <optional>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "StringUtils.h"

namespace {

/// Entries that are not flushed are handed to the file once they have grown to this size.
constexpr std::size_t kMostPending = 65536;

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
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the logger has initialised them.
    va_copy(measured, arguments);
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
    constexpr int kMostInterruptions = 10;
    for (int interruptions = 0; !text.empty() && interruptions < kMostInterruptions;) {
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

class LogStream::Impl {
  public:
    // Without a level nothing is dropped: whether to trace at all is GetLogLevel's to say.
    explicit Impl(char const* name)
        : highestLevel_(LogLevel().value_or(ULONG_MAX)), file_(OpenLog(LogPath(name))) {}

    ~Impl() {
        Flush();
        if (file_ >= 0)
            close(file_);
    }

    Impl(Impl const&) = delete;
    Impl& operator=(Impl const&) = delete;

    void Add(unsigned char level, char const* format, va_list& arguments) {
        if (file_ < 0 || level > highestLevel_)
            return;
        AppendFormatted(pending_, format, arguments);
        if (pending_.size() >= kMostPending)
            Flush();
    }

    void Flush() {
        if (file_ >= 0)
            WriteLog(file_, pending_);
        pending_.clear();
    }

  private:
    unsigned long const highestLevel_;
    int const file_;
    std::string pending_;
};

LogStream::LogStream(char const* name, bool /*option1*/, bool /*option2*/, int /*option3*/,
                     int /*option4*/, unsigned /*option5*/, bool /*option6*/) {
    try {
        mImpl = std::make_unique<Impl>(name);
    } catch (std::exception const&) {
        // Without memory there is no log.
    }
}

LogStream::~LogStream() = default;

void LogStream::TRACE(unsigned char level, char const* format, va_list& arguments,
                      unsigned char /*option*/) {
    try {
        if (mImpl != nullptr)
            mImpl->Add(level, format, arguments);
    } catch (std::exception const&) {
        // Without memory the entry is lost.
    }
}

void LogStream::Flush() {
    if (mImpl != nullptr)
        mImpl->Flush();
}

void CallRecordingPlatform::GetLogLevel(bool* isEnabled, bool* /*unused*/) {
    if (isEnabled != nullptr)
        *isEnabled = LogLevel().has_value();
}
