/// @file
/// The log of a plain host: a file that entries are appended to.

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

#include "Posix.h"
#include "QuietWrite.h"
#include "StringUtils.h"

using namespace HostPlatform;

namespace {

/// Entries are written at the latest when this many bytes are pending.
constexpr std::size_t kMostPending = 65536;

/// Returns the number in QUVA_LOG_LEVEL, at most ULONG_MAX; nothing if it is not a number.
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

/// Appends format, expanded with arguments as by vprintf, to text.
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

bool IsSameFile(struct stat const& a, struct stat const& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

/// Writes as much of text as the file accepts. Returns how much that is.
std::size_t WriteLog(int file, std::string_view text) {
    constexpr int kMostInterruptions = 10;
    std::size_t written = 0;
    for (int interruptions = 0; written < text.size() && interruptions < kMostInterruptions;) {
        ssize_t const count = QuietWrite(file, text.data() + written, text.size() - written);
        if (count > 0)
            written += static_cast<std::size_t>(count);
        else if (count < 0 && errno == EINTR)
            ++interruptions;
        else
            break;
    }
    return written;
}

/// The log file. Before each write it is looked up by its name again.
class LogFile {
  public:
    explicit LogFile(std::string path) : path_(std::move(path)) { Find(); }
    ~LogFile() { Forget(); }
    LogFile(LogFile const&) = delete;
    LogFile& operator=(LogFile const&) = delete;

    void Append(std::string_view text) {
        Find();
        if (file_ < 0)
            return;
        if (isTorn_ && WriteLog(file_, "\n") == 1)
            isTorn_ = false;
        if (isTorn_)
            return;
        std::size_t const written = WriteLog(file_, text);
        isTorn_ = written > 0 && written < text.size() && text[written - 1] != '\n';
    }

  private:
    /// Opens the file that has the name now, unless it is open already. If that fails, the file
    /// that was opened last stays in use.
    void Find() {
        struct stat named {};
        if (IsOwn() && stat(path_.c_str(), &named) == 0 && IsSameFile(named, own_))
            return;
        // Without blocking: a stuck reader of a pipe must not delay a call.
        constexpr int kFlags = O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
        int const file = open(path_.c_str(), kFlags, 0644);
        if (file < 0)
            return;
        Forget();
        file_ = file;
        if (fstat(file_, &own_) != 0)
            Forget();
        isTorn_ = EndsInTornLine();
    }

    /// Returns whether the descriptor is still the log's. A host process that closes all
    /// descriptors to become a daemon may have opened another file under the same number since.
    bool IsOwn() {
        struct stat status {};
        if (file_ >= 0 && (fstat(file_, &status) != 0 || !IsSameFile(status, own_)))
            file_ = -1;
        return file_ >= 0;
    }

    void Forget() {
        if (IsOwn())
            close(file_);
        file_ = -1;
    }

    /// Returns whether the last line in the file is incomplete.
    bool EndsInTornLine() const {
        if (!S_ISREG(own_.st_mode) || own_.st_size == 0)
            return false;
        Descriptor const file(open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
        char last = '\n';
        return file.Number() >= 0 && pread(file.Number(), &last, 1, own_.st_size - 1) == 1 &&
               last != '\n';
    }

    std::string path_;
    int file_ = -1;
    struct stat own_ {};
    bool isTorn_ = false; // The next entry has to begin a new line first.
};

} // namespace

class LogStream::Impl {
  public:
    // Without a level no entry is dropped; GetLogLevel says whether to trace at all.
    explicit Impl(char const* name)
        : highestLevel_(LogLevel().value_or(ULONG_MAX)), file_(LogPath(name)) {}

    void Add(unsigned char level, char const* format, va_list& arguments) {
        if (level > highestLevel_)
            return;
        AppendFormatted(pending_, format, arguments);
        if (pending_.size() >= kMostPending)
            Flush();
    }

    void Flush() {
        if (!pending_.empty())
            file_.Append(pending_);
        pending_.clear();
    }

  private:
    unsigned long highestLevel_;
    LogFile file_;
    std::string pending_;
};

LogStream::LogStream(char const* name, bool /*option1*/, bool /*option2*/, int /*option3*/,
                     int /*option4*/, unsigned /*option5*/, bool /*option6*/) {
    try {
        mImpl = std::make_unique<Impl>(name);
    } catch (std::exception const&) {
        return; // Out of memory: there is no log.
    }
}

LogStream::~LogStream() {
    Flush();
}

void LogStream::TRACE(unsigned char level, char const* format, va_list& arguments,
                      unsigned char /*option*/) {
    try {
        if (mImpl != nullptr)
            mImpl->Add(level, format, arguments);
    } catch (std::exception const&) {
        return; // Out of memory: the entry is lost.
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
