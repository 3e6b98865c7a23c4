// Reads the file through the platform's class, and looks at its metadata and bytes itself.

#include "loading/LoadedRules.h"

#include <cerrno>
#include <memory>
#include <new>
#include <stdexcept>
#include <system_error>
#include <tuple>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "common/MemoryFile.h"
#include "common/Sha256.h"
#include "database/RuleFile.h"

namespace CallRecordingUtils {
namespace {

std::int64_t Nanoseconds(timespec const& time) {
    return std::int64_t{time.tv_sec} * 1000000000 + time.tv_nsec;
}

std::vector<CallRecordingRuleParams> ReadRecords(std::string const& path) {
    std::vector<CallRecordingRuleParams> records;
    RuleFile file(path);
    while (file.Next())
        records.push_back(file.ReadRule());
    return records;
}

/// Opens the file at path for reading; without waiting, should it be a pipe by now.
int OpenForReading(std::string const& path) {
    return open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
}

class OpenFile {
  public:
    explicit OpenFile(std::string const& path) : number_(OpenForReading(path)) {}
    ~OpenFile() {
        if (number_ >= 0)
            close(number_);
    }
    OpenFile(OpenFile const&) = delete;
    OpenFile& operator=(OpenFile const&) = delete;

    bool IsOpen() const { return number_ >= 0; }

    /// Reads into buffer, which it fills at most; returns how many bytes, 0 at the end.
    std::size_t Read(std::vector<char>& buffer) const {
        ssize_t count = read(number_, buffer.data(), buffer.size());
        while (count < 0 && errno == EINTR)
            count = read(number_, buffer.data(), buffer.size());
        if (count < 0)
            throw std::system_error(errno, std::generic_category(), "it cannot be read");
        return static_cast<std::size_t>(count);
    }

  private:
    int const number_;
};

/// A file that is missing has the digest of an empty one.
std::string DigestOfFile(std::string const& path) {
    Sha256 digest;
    OpenFile const file(path);
    if (!file.IsOpen() && errno != ENOENT)
        throw std::system_error(errno, std::generic_category(), "it cannot be opened");
    std::vector<char> buffer(file.IsOpen() ? 65536 : 0);
    while (std::size_t const count = file.IsOpen() ? file.Read(buffer) : 0)
        digest.Add({buffer.data(), count});
    return digest.Digits();
}

LoadFailure::Kind KindOfError(int error) {
    switch (error) {
    case ENOENT:
    case ENOTDIR: return LoadFailure::Kind::Missing;
    case EACCES:
    case EPERM: return LoadFailure::Kind::Permission;
    case ENOMEM: return LoadFailure::Kind::Memory;
    default: return LoadFailure::Kind::Other;
    }
}

/// The kind of a failure for which the platform's class gave no error number.
LoadFailure::Kind KindOfFile(std::string const& path) {
    return OpenFile(path).IsOpen() ? LoadFailure::Kind::Malformed : KindOfError(errno);
}

} // namespace

bool FileStamp::operator==(FileStamp const& other) const {
    auto const all = [](FileStamp const& s) {
        return std::tie(s.error, s.device, s.inode, s.size, s.written, s.changed);
    };
    return all(*this) == all(other);
}

FileStamp FileStamp::Of(std::string const& path) {
    FileStamp stamp;
    struct stat status;
    if (stat(path.c_str(), &status) != 0) {
        stamp.error = errno;
        return stamp;
    }
    stamp.device = status.st_dev;
    stamp.inode = status.st_ino;
    stamp.size = status.st_size;
    stamp.written = Nanoseconds(status.st_mtim);
    stamp.changed = Nanoseconds(status.st_ctim);
    return stamp;
}

LoadedRules::LoadedRules(std::vector<CallRecordingRuleParams> records, std::string sha256)
    : rules(std::move(records)), digest(std::move(sha256)), time(std::time(nullptr)) {}

std::unique_ptr<LoadedRules const> ReadRulesOfFile(std::string const& path, FileStamp& stamp) {
    constexpr int kMostAttempts = 5;
    for (int attempt = 0; attempt < kMostAttempts; ++attempt) {
        stamp = FileStamp::Of(path);
        std::vector<CallRecordingRuleParams> records = ReadRecords(path);
        std::string digest = DigestOfFile(path);
        if (FileStamp::Of(path) == stamp)
            return std::make_unique<LoadedRules const>(std::move(records), std::move(digest));
    }
    throw std::system_error(EBUSY, std::generic_category(), "it changed whenever it was read");
}

std::unique_ptr<LoadedRules const> ReadRulesOfText(std::string_view text) {
    Sha256 digest;
    digest.Add(text);
    MemoryFile const file(text);
    std::string const path = file.Path();
    try {
        return std::make_unique<LoadedRules const>(ReadRecords(path), digest.Digits());
    } catch (std::system_error const&) {
        throw; // It is about the file in memory.
    } catch (std::runtime_error const& error) {
        std::string reason = error.what();
        if (std::size_t const at = reason.find(path); at != std::string::npos)
            reason.replace(at, path.size(), "the text");
        throw std::runtime_error(reason);
    }
}

LoadFailure FailureOf(std::exception_ptr const& exception, std::string const& path) noexcept {
    using Kind = LoadFailure::Kind;
    try {
        try {
            std::rethrow_exception(exception);
        } catch (std::exception const& error) {
            auto const* const system = dynamic_cast<std::system_error const*>(&error);
            bool const isMemory = dynamic_cast<std::bad_alloc const*>(&error) != nullptr;
            Kind const kind = isMemory            ? Kind::Memory
                              : system != nullptr ? KindOfError(system->code().value())
                              : path.empty()      ? Kind::Malformed
                                                  : KindOfFile(path);
            std::string const reason = isMemory ? "out of memory" : error.what();
            if (isMemory || reason.find(path) != std::string::npos)
                return {kind, reason};
            return {kind, path + ": " + reason};
        }
    } catch (...) {
        return {Kind::Memory, "out of memory"}; // So short that it needs none.
    }
}

} // namespace CallRecordingUtils
