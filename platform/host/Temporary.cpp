/// @file
/// Creates, fills and renames temporary files, and removes leftovers.

#include "Temporary.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <memory>

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>

#include "QuietWrite.h"

namespace HostPlatform {

namespace {

constexpr std::string_view kEnding = ".tmp";

bool IsSameFile(struct stat const& a, struct stat const& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

/// Locks a new file. Returns false if another process took it for a leftover first and removes it.
/// (That does not happen where files cannot be locked.)
bool LockNew(int file) {
    if (flock(file, LOCK_EX | LOCK_NB) != 0)
        return errno != EWOULDBLOCK;
    struct stat status {};
    return fstat(file, &status) == 0 && status.st_nlink != 0;
}

/// Removes a dot and the digits after it from the front of text. Returns false if there are none.
bool TakeNumber(std::string_view& text) {
    if (text.empty() || text.front() != '.')
        return false;
    std::size_t const end = std::min(text.find_first_not_of("0123456789", 1), text.size());
    text.remove_prefix(end);
    return end > 1;
}

/// Returns whether entry is the name of a temporary file for the file name.
bool IsTemporaryOf(std::string_view name, std::string_view entry) {
    if (entry.substr(0, name.size()) != name)
        return false;
    entry.remove_prefix(name.size());
    bool const hasProcess = TakeNumber(entry);
    bool const hasCount = hasProcess && TakeNumber(entry);
    return hasCount && entry == kEnding;
}

/// Removes the file entry unless a living process holds the lock on it.
void RemoveIfDead(int directory, char const* entry) {
    constexpr int kFlags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    Descriptor const file(openat(directory, entry, kFlags));
    struct stat opened {};
    if (file.Number() < 0 || fstat(file.Number(), &opened) != 0 || !S_ISREG(opened.st_mode) ||
        flock(file.Number(), LOCK_EX | LOCK_NB) != 0)
        return;
    // The file may have been renamed meanwhile, and the entry may be somebody's next temporary.
    struct stat named {};
    if (fstatat(directory, entry, &named, AT_SYMLINK_NOFOLLOW) == 0 && IsSameFile(opened, named))
        unlinkat(directory, entry, 0);
}

} // namespace

Temporary::Temporary(Descriptor const& directory, std::string const& name, mode_t mode,
                     std::string const& path)
    : path_(path), directory_(directory), file_(Create(name, mode)),
      lock_(fcntl(file_.Number(), F_DUPFD_CLOEXEC, 0)) {}

Temporary::~Temporary() {
    if (!isRenamed_)
        unlinkat(directory_.Number(), name_.c_str(), 0);
}

int Temporary::Create(std::string const& name, mode_t mode) {
    static std::atomic<unsigned> counter{0};
    // Only processes with the same number, in other containers, take names, so few are taken.
    constexpr int kMostNames = 1000;
    constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC;
    for (int names = 1;; ++names) {
        name_ = name + "." + std::to_string(getpid()) + "." + std::to_string(counter++);
        name_ += kEnding;
        int const file =
            Uninterrupted([&] { return openat(directory_.Number(), name_.c_str(), kFlags, mode); });
        if (file >= 0 && LockNew(file))
            return file;
        int const error = file >= 0 ? EEXIST : errno;
        if (file >= 0)
            close(file);
        if (error != EEXIST || names == kMostNames)
            FailOf(path_, "no temporary file can be created beside it", error);
    }
}

void Temporary::TakeOwnerAndMode(struct stat const& old) {
    struct stat own {};
    if (fstat(file_.Number(), &own) != 0)
        FailOf(path_, "its temporary file cannot be looked up");
    // The owner first: changing it clears some bits of the mode.
    if ((own.st_uid != old.st_uid || own.st_gid != old.st_gid) &&
        fchown(file_.Number(), old.st_uid, old.st_gid) != 0)
        TakeGroup(old);
    if (fchmod(file_.Number(), old.st_mode & 07777) != 0)
        FailOf(path_, "its mode cannot be kept");
}

/// After a failed change of owner and group. Several editors have their rights through the group,
/// so that has to be kept.
void Temporary::TakeGroup(struct stat const& old) {
    // EINVAL: the owner is unknown in this user namespace.
    if (errno != EPERM && errno != EINVAL)
        FailOf(path_, "its owner cannot be kept");
    constexpr uid_t kSameOwner = static_cast<uid_t>(-1);
    if (fchown(file_.Number(), kSameOwner, old.st_gid) != 0)
        FailOf(path_, "its group cannot be kept");
}

void Temporary::Write(std::string_view content) {
    while (!content.empty()) {
        ssize_t const count = Uninterrupted(
            [&] { return QuietWrite(file_.Number(), content.data(), content.size()); });
        if (count <= 0) {
            // A write of nothing without an error would otherwise be repeated for ever.
            FailOf(path_, "its temporary file cannot be written", count < 0 ? errno : EIO);
        }
        content.remove_prefix(static_cast<std::size_t>(count));
    }
}

void Temporary::Sync() {
    // Only an interrupted call is repeated. After any other failure the kernel may have dropped the
    // data that it could not write, and a second call would succeed nevertheless.
    if (Uninterrupted([&] { return fsync(file_.Number()); }) != 0)
        FailOf(path_, "its temporary file cannot be made durable");
}

void Temporary::Close() {
    // An interrupted close has closed the file, and the data is durable already.
    if (file_.Close() != 0 && errno != EINTR)
        FailOf(path_, "its temporary file cannot be closed");
}

void Temporary::Rename(std::string const& name) {
    if (renameat(directory_.Number(), name_.c_str(), directory_.Number(), name.c_str()) == 0) {
        isRenamed_ = true;
        return;
    }
    if (errno == EBUSY)
        FailOf(path_, "is a mount point and cannot be replaced; mount its directory instead");
    FailOf(path_, "cannot be replaced by its temporary file");
}

FileStamp Temporary::Stamp() const {
    struct stat status {}; // No file has all zeros: if this fails, the next save is refused.
    fstat(lock_.Number(), &status);
    return FileStamp::Of(status);
}

void RemoveLeftovers(Descriptor const& directory, std::string const& name) noexcept {
    int const listed =
        openat(directory.Number(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK);
    std::unique_ptr<DIR, int (*)(DIR*)> const entries(listed < 0 ? nullptr : fdopendir(listed),
                                                      &closedir);
    if (entries == nullptr) {
        if (listed >= 0)
            close(listed);
        return;
    }
    while (dirent const* const entry = readdir(entries.get()))
        if (IsTemporaryOf(name, entry->d_name))
            RemoveIfDead(directory.Number(), entry->d_name);
}

} // namespace HostPlatform
