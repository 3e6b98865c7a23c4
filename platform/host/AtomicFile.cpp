/// @file
/// Whole files, on the system calls of a POSIX host.

#include "AtomicFile.h"

#include <atomic>
#include <cerrno>
#include <climits>
#include <optional>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/// Throws what the last system call reported about path.
[[noreturn]] void Fail(std::string const& path, char const* what, int error = errno) {
    throw std::system_error(error, std::generic_category(), path + ": " + what);
}

/// Repeats a system call for as long as a signal interrupts it.
template <typename Call>
auto Uninterrupted(Call call) {
    auto result = call();
    while (result == -1 && errno == EINTR)
        result = call();
    return result;
}

/// An open file, closed at the end of the object's life.
class Descriptor {
  public:
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(Descriptor const&) = delete;
    Descriptor& operator=(Descriptor const&) = delete;
    ~Descriptor() {
        if (number_ >= 0)
            close(number_);
    }

    int Number() const { return number_; }

    /// Closes the file and returns the result. Whatever it is, the descriptor is gone then, and
    /// closing it again could hit a file that another thread has just opened.
    int Close() { return close(std::exchange(number_, -1)); }

  private:
    int number_;
};

/// Where a file is: its directory, and its name there.
struct Place {
    std::string directory;
    std::string name;
};

Place Split(std::string const& path) {
    std::size_t const slash = path.rfind('/');
    if (slash == std::string::npos)
        return {".", path};
    return {path.substr(0, slash == 0 ? 1 : slash), path.substr(slash + 1)};
}

/// Replaces link by what it refers to. Returns false when no symbolic link is there.
bool FollowLink(std::string& link) {
    char target[PATH_MAX];
    ssize_t const length = readlink(link.c_str(), target, sizeof target);
    if (length < 0) {
        if (errno != EINVAL && errno != ENOENT)
            Fail(link, "cannot be looked up");
        return false;
    }
    if (length == 0 || static_cast<std::size_t>(length) == sizeof target)
        Fail(link, "the symbolic link cannot be followed", ENAMETOOLONG);
    std::string const text(target, static_cast<std::size_t>(length));
    link = text[0] == '/' ? text : Split(link).directory + "/" + text;
    return true;
}

/// Returns where the file at path is, or is to be made, behind all symbolic links. Without this the
/// link itself would be replaced, and its file be left as it was.
Place Resolve(std::string const& path) {
    // As many as the kernel follows.
    constexpr int kMostLinks = 40;
    std::string end(path);
    for (int links = 0; FollowLink(end); ++links)
        if (links == kMostLinks)
            Fail(path, "cannot be looked up", ELOOP);
    Place place = Split(end);
    if (place.name.empty())
        Fail(path, "is no name of a file", ENOENT);
    return place;
}

int OpenDirectory(std::string const& path) {
    int const directory = Uninterrupted(
        [&] { return open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK); });
    if (directory < 0)
        Fail(path, "the directory cannot be opened");
    return directory;
}

/// Returns what is known of the file that is to be replaced; nothing when there is none yet.
std::optional<struct stat> OldFile(Descriptor const& directory, std::string const& name,
                                   std::string const& path) {
    struct stat status {};
    if (fstatat(directory.Number(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        if (errno != ENOENT)
            Fail(path, "cannot be looked up");
        return std::nullopt;
    }
    if (!S_ISREG(status.st_mode))
        Fail(path, "is no regular file", EINVAL);
    return status;
}

/// A new file in a directory, removed again unless it took over another file's name.
class Temporary {
  public:
    /// path is the file that this one is made for.
    Temporary(Descriptor const& directory, std::string const& name, mode_t mode,
              std::string const& path)
        : path_(path), directory_(directory), file_(Create(name, mode)) {}
    Temporary(Temporary const&) = delete;
    Temporary& operator=(Temporary const&) = delete;
    ~Temporary() {
        if (!isRenamed_)
            unlinkat(directory_.Number(), name_.c_str(), 0);
    }

    void TakeOwnerAndMode(struct stat const& old);
    void Write(std::string_view content);
    void Sync();
    void Close();
    void Rename(std::string const& name);

  private:
    int Create(std::string const& name, mode_t mode);

    std::string const& path_;
    Descriptor const& directory_;
    std::string name_;
    Descriptor file_;
    bool isRenamed_ = false;
};

int Temporary::Create(std::string const& name, mode_t mode) {
    static std::atomic<unsigned> counter{0};
    // A name is taken only where a process of the same number was killed, so there are few.
    constexpr int kMostNames = 1000;
    for (int names = 1;; ++names) {
        name_ = name + "." + std::to_string(getpid()) + "." + std::to_string(counter++) + ".tmp";
        int const file = Uninterrupted([&] {
            return openat(directory_.Number(), name_.c_str(),
                          O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
        });
        if (file >= 0)
            return file;
        if (errno != EEXIST || names == kMostNames)
            Fail(path_, "a temporary file cannot be made beside it");
    }
}

void Temporary::TakeOwnerAndMode(struct stat const& old) {
    struct stat own {};
    if (fstat(file_.Number(), &own) != 0)
        Fail(path_, "its temporary file cannot be looked up");
    // The owner first: a change of owner takes some of the mode's bits away.
    if ((own.st_uid != old.st_uid || own.st_gid != old.st_gid) &&
        fchown(file_.Number(), old.st_uid, old.st_gid) != 0)
        Fail(path_, "its owner cannot be kept");
    if (fchmod(file_.Number(), old.st_mode & 07777) != 0)
        Fail(path_, "its mode cannot be kept");
}

void Temporary::Write(std::string_view content) {
    while (!content.empty()) {
        ssize_t const count =
            Uninterrupted([&] { return write(file_.Number(), content.data(), content.size()); });
        if (count <= 0) {
            // Nothing written and no error would otherwise be tried for ever.
            Fail(path_, "its temporary file cannot be written", count < 0 ? errno : EIO);
        }
        content.remove_prefix(static_cast<std::size_t>(count));
    }
}

void Temporary::Sync() {
    // Only an interrupted call is repeated. After any other failure the kernel may have dropped the
    // data that it could not write, and a second call would report success for it.
    if (Uninterrupted([&] { return fsync(file_.Number()); }) != 0)
        Fail(path_, "its temporary file cannot be made durable");
}

void Temporary::Close() {
    // An interrupted close has closed the file, and what it held is durable already.
    if (file_.Close() != 0 && errno != EINTR)
        Fail(path_, "its temporary file cannot be closed");
}

void Temporary::Rename(std::string const& name) {
    if (renameat(directory_.Number(), name_.c_str(), directory_.Number(), name.c_str()) != 0)
        Fail(path_, "cannot be replaced by its temporary file");
    isRenamed_ = true;
}

void SyncDirectory(Descriptor const& directory, std::string const& path) {
    if (Uninterrupted([&] { return fsync(directory.Number()); }) == 0)
        return;
    // Some file systems cannot sync a directory at all. The file is replaced, there is nothing left
    // that could be done for it, and calling every edit a failure would help nobody.
    if (errno != EINVAL && errno != ENOTSUP)
        Fail(path, "is replaced, but this may not survive a loss of power");
}

/// Opens the file at path for reading. Returns -1 when there is none but its directory exists.
int OpenForReading(std::string const& path) {
    int const file = Uninterrupted(
        [&] { return open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY); });
    if (file < 0) {
        if (errno != ENOENT)
            Fail(path, "cannot be opened");
        struct stat status {};
        if (stat(Resolve(path).directory.c_str(), &status) != 0)
            Fail(path, "its directory cannot be looked up");
    }
    return file;
}

} // namespace

std::string ReadFile(std::string const& path) {
    Descriptor const file(OpenForReading(path));
    if (file.Number() < 0)
        return {};
    struct stat status {};
    if (fstat(file.Number(), &status) != 0)
        Fail(path, "cannot be looked up");
    if (!S_ISREG(status.st_mode))
        Fail(path, "is no regular file", EINVAL);

    // More than the file has: its end shows without growing the text, and an edit finds room.
    constexpr std::size_t kRoom = 4096;
    std::string text(static_cast<std::size_t>(status.st_size) + kRoom, '\0');
    std::size_t length = 0;
    for (;;) {
        ssize_t const count = Uninterrupted(
            [&] { return read(file.Number(), text.data() + length, text.size() - length); });
        if (count < 0)
            Fail(path, "cannot be read");
        if (count == 0) {
            text.resize(length);
            return text;
        }
        length += static_cast<std::size_t>(count);
        if (length == text.size())
            text.resize(2 * length); // The file has grown meanwhile.
    }
}

void ReplaceFile(std::string const& path, std::string_view content) {
    Place const target = Resolve(path);
    // Before anything is made, so that what cannot be finished is not begun.
    Descriptor const directory(OpenDirectory(target.directory));
    std::optional<struct stat> const old = OldFile(directory, target.name, path);

    // Nobody may look into the new file before it has the old one's owner and mode.
    Temporary temporary(directory, target.name, old ? 0600 : 0666, path);
    if (old)
        temporary.TakeOwnerAndMode(*old);
    temporary.Write(content);
    temporary.Sync();
    temporary.Close();
    temporary.Rename(target.name);
    SyncDirectory(directory, path);
}
