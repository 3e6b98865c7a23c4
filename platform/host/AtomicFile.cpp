/// @file
/// Whole files, on the system calls of a POSIX host.

#include "AtomicFile.h"

#include <chrono>
#include <climits>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>

#include "Posix.h"
#include "Temporary.h"

namespace HostPlatform {

namespace {

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
            FailOf(link, "cannot be looked up");
        return false;
    }
    if (length == 0 || static_cast<std::size_t>(length) == sizeof target)
        FailOf(link, "the symbolic link cannot be followed", ENAMETOOLONG);
    std::string const text(target, static_cast<std::size_t>(length));
    link = text[0] == '/' ? text : Split(link).directory + "/" + text;
    return true;
}

/// Returns where the file at path is, or is to be made, behind all symbolic links. Without this the
/// link itself would be replaced, and its file be left as it was.
Place Resolve(std::string const& path) {
    constexpr int kMostLinks = 40; // As many as the kernel follows.
    std::string end(path);
    for (int links = 0; FollowLink(end); ++links)
        if (links == kMostLinks)
            FailOf(path, "cannot be looked up", ELOOP);
    Place place = Split(end);
    if (place.name.empty())
        FailOf(path, "is no name of a file", ENOENT);
    return place;
}

int OpenDirectory(std::string const& path) {
    int const directory = Uninterrupted(
        [&] { return open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK); });
    if (directory < 0)
        FailOf(path, "the directory cannot be opened");
    return directory;
}

/// Returns what is known of the file that is to be replaced; nothing when there is none.
std::optional<struct stat> OldFile(Descriptor const& directory, std::string const& name,
                                   std::string const& path) {
    struct stat status {};
    if (fstatat(directory.Number(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        if (errno != ENOENT)
            FailOf(path, "cannot be looked up");
        return std::nullopt;
    }
    if (!S_ISREG(status.st_mode))
        FailOf(path, "is no regular file", EINVAL);
    return status;
}

void RequireUnchanged(std::optional<struct stat> const& old, std::optional<FileStamp> const& stamp,
                      std::string const& path) {
    if (old ? stamp != FileStamp::Of(*old) : stamp.has_value())
        Refuse(path, "was changed by somebody else after it was read; nothing is written");
}

/// A turn among those who replace files in one directory, so that between the last look at a file
/// and the rename nobody else's rename comes. It lasts microseconds. Who cannot get one in time
/// goes on without: anybody who may read a directory can lock it, and must not be able to stop a
/// save.
class Turn {
  public:
    explicit Turn(Descriptor const& directory) : directory_(directory) {
        constexpr std::chrono::milliseconds kPause(1);
        constexpr int kMostTries = 200;
        for (int tries = 1; flock(directory_.Number(), LOCK_EX | LOCK_NB) != 0; ++tries) {
            if (errno != EWOULDBLOCK || tries == kMostTries)
                return;
            std::this_thread::sleep_for(kPause);
        }
    }
    // Not left to closing: a process forked meanwhile shares the open directory.
    ~Turn() { flock(directory_.Number(), LOCK_UN); }
    Turn(Turn const&) = delete;
    Turn& operator=(Turn const&) = delete;

  private:
    Descriptor const& directory_;
};

void SyncDirectory(Descriptor const& directory, std::string const& path) {
    if (Uninterrupted([&] { return fsync(directory.Number()); }) == 0)
        return;
    // Some file systems cannot sync a directory at all. The file is replaced, there is nothing left
    // that could be done for it, and calling every edit a failure would help nobody.
    if (errno != EINVAL && errno != ENOTSUP)
        FailOf(path, "is replaced, but this may not survive a loss of power");
}

/// Opens the file at path for reading. Returns -1 when there is none but its directory exists.
int OpenForReading(std::string const& path) {
    int const file = Uninterrupted(
        [&] { return open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY); });
    if (file < 0) {
        if (errno != ENOENT)
            FailOf(path, "cannot be opened");
        struct stat status {};
        if (stat(Resolve(path).directory.c_str(), &status) != 0)
            FailOf(path, "its directory cannot be looked up");
    }
    return file;
}

/// The status of the open file, which is a regular one of no senseless size.
struct stat StatusOf(Descriptor const& file, std::string const& path) {
    struct stat status {};
    if (fstat(file.Number(), &status) != 0)
        FailOf(path, "cannot be looked up");
    if (!S_ISREG(status.st_mode))
        FailOf(path, "is no regular file", EINVAL);
    return status;
}

void RequireSize(std::size_t size, std::string const& path) {
    if (size > kLargestFile)
        FailOf(path,
               "has " + std::to_string(size) + " bytes, expected at most " +
                   std::to_string(kLargestFile),
               EFBIG);
}

/// Reads the open file from where it stands to its end; size is what it is believed to have.
std::string ReadToEnd(Descriptor const& file, std::size_t size, std::string const& path) {
    std::string text(size + 1, '\0'); // One more, so that the end shows without growing the text.
    std::size_t length = 0;
    for (;;) {
        ssize_t const count = Uninterrupted(
            [&] { return read(file.Number(), text.data() + length, text.size() - length); });
        if (count < 0)
            FailOf(path, "cannot be read");
        length += static_cast<std::size_t>(count);
        RequireSize(length, path);
        if (count == 0) {
            text.resize(length);
            return text;
        }
        if (length == text.size())
            text.resize(2 * length); // The file has grown meanwhile.
    }
}

} // namespace

FileText ReadFile(std::string const& path) {
    Descriptor const file(OpenForReading(path));
    if (file.Number() < 0)
        return {};
    constexpr int kMostReads = 20;
    for (int reads = 0; reads < kMostReads; ++reads) {
        FileStamp const before = FileStamp::Of(StatusOf(file, path));
        RequireSize(static_cast<std::size_t>(before.size), path);
        if (lseek(file.Number(), 0, SEEK_SET) != 0)
            FailOf(path, "cannot be read");
        std::string text = ReadToEnd(file, static_cast<std::size_t>(before.size), path);
        // Somebody may be writing into the file itself: half of that would pass for the whole.
        if (FileStamp::Of(StatusOf(file, path)) == before)
            return {std::move(text), before};
    }
    Refuse(path, "is written to all the time while it is read");
}

void ReplaceFile(std::string const& path, std::string_view content,
                 std::optional<FileStamp>& stamp) {
    RequireSize(content.size(), path);
    Place const target = Resolve(path);
    // Before anything is made, so that what cannot be finished is not begun.
    Descriptor const directory(OpenDirectory(target.directory));
    RemoveLeftovers(directory, target.name);
    std::optional<struct stat> const old = OldFile(directory, target.name, path);
    RequireUnchanged(old, stamp, path);

    // Nobody may look into the new file before it has the old one's owner and mode.
    Temporary temporary(directory, target.name, old ? 0600 : 0666, path);
    if (old)
        temporary.TakeOwnerAndMode(*old);
    temporary.Write(content);
    temporary.Sync();
    temporary.Close();
    {
        Turn const turn(directory);
        RequireUnchanged(OldFile(directory, target.name, path), stamp, path);
        temporary.Rename(target.name);
        stamp = temporary.Stamp();
    }
    SyncDirectory(directory, path);
}

} // namespace HostPlatform
