/// @file
/// The life of a temporary file, and the end of those whose process died first.

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

/// Takes the lock of a new file. Returns false when somebody took the file for a leftover before
/// that, and removes it. Where files cannot be locked nobody does.
bool LockNew(int file) {
    if (flock(file, LOCK_EX | LOCK_NB) != 0)
        return errno != EWOULDBLOCK;
    struct stat status {};
    return fstat(file, &status) == 0 && status.st_nlink != 0;
}

/// Takes a dot and the digits behind it from the front of text. Returns whether they are there.
bool TakeNumber(std::string_view& text) {
    if (text.empty() || text.front() != '.')
        return false;
    std::size_t const end = std::min(text.find_first_not_of("0123456789", 1), text.size());
    text.remove_prefix(end);
    return end > 1;
}

/// Whether entry is what a temporary file for the file name is called.
bool IsTemporaryOf(std::string_view name, std::string_view entry) {
    if (entry.substr(0, name.size()) != name)
        return false;
    entry.remove_prefix(name.size());
    bool const hasProcess = TakeNumber(entry);
    bool const hasCount = hasProcess && TakeNumber(entry);
    return hasCount && entry == kEnding;
}

/// Removes the file entry unless its process lives and holds the lock on it.
void RemoveIfDead(int directory, char const* entry) {
    constexpr int kFlags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    Descriptor const file(openat(directory, entry, kFlags));
    struct stat opened {};
    if (file.Number() < 0 || fstat(file.Number(), &opened) != 0 || !S_ISREG(opened.st_mode) ||
        flock(file.Number(), LOCK_EX | LOCK_NB) != 0)
        return;
    // The file may have got its final name meanwhile, and the entry may be somebody's next.
    struct stat named {};
    if (fstatat(directory, entry, &named, AT_SYMLINK_NOFOLLOW) == 0 && IsSameFile(opened, named))
        unlinkat(directory, entry, 0);
}

} // namespace

Temporary::Temporary(Descriptor const& directory, std::string const& name, mode_t mode,
                     std::string const& path)
    : path_(path), directory_(directory), file_(Create(name, mode)),
      open_(fcntl(file_.Number(), F_DUPFD_CLOEXEC, 0)) {}

Temporary::~Temporary() {
    if (!isRenamed_)
        unlinkat(directory_.Number(), name_.c_str(), 0);
}

int Temporary::Create(std::string const& name, mode_t mode) {
    static std::atomic<unsigned> counter{0};
    // A name is taken only by another process of the same number, so there are few.
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
            FailOf(path_, "a temporary file cannot be made beside it", error);
    }
}

void Temporary::TakeOwnerAndMode(struct stat const& old) {
    struct stat own {};
    if (fstat(file_.Number(), &own) != 0)
        FailOf(path_, "its temporary file cannot be looked up");
    // The owner first: a change of owner takes some of the mode's bits away.
    if ((own.st_uid != old.st_uid || own.st_gid != old.st_gid) &&
        fchown(file_.Number(), old.st_uid, old.st_gid) != 0)
        FailOf(path_, "its owner cannot be kept");
    if (fchmod(file_.Number(), old.st_mode & 07777) != 0)
        FailOf(path_, "its mode cannot be kept");
}

void Temporary::Write(std::string_view content) {
    while (!content.empty()) {
        ssize_t const count = Uninterrupted(
            [&] { return QuietWrite(file_.Number(), content.data(), content.size()); });
        if (count <= 0) {
            // Nothing written and no error would otherwise be tried for ever.
            FailOf(path_, "its temporary file cannot be written", count < 0 ? errno : EIO);
        }
        content.remove_prefix(static_cast<std::size_t>(count));
    }
}

void Temporary::Sync() {
    // Only an interrupted call is repeated. After any other failure the kernel may have dropped the
    // data that it could not write, and a second call would report success for it.
    if (Uninterrupted([&] { return fsync(file_.Number()); }) != 0)
        FailOf(path_, "its temporary file cannot be made durable");
}

void Temporary::Close() {
    // An interrupted close has closed the file, and what it held is durable already.
    if (file_.Close() != 0 && errno != EINTR)
        FailOf(path_, "its temporary file cannot be closed");
}

void Temporary::Rename(std::string const& name) {
    if (renameat(directory_.Number(), name_.c_str(), directory_.Number(), name.c_str()) == 0) {
        isRenamed_ = true;
        return;
    }
    if (errno == EBUSY)
        FailOf(path_, "is a mount point of its own and cannot be replaced; mount its directory");
    FailOf(path_, "cannot be replaced by its temporary file");
}

FileStamp Temporary::Stamp() const {
    struct stat status {}; // All zeros is no file's: who fails here saves no second time.
    fstat(open_.Number(), &status);
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
