/// @file
/// Reads and replaces whole files with POSIX system calls.

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

/// A directory and the name of a file in it.
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

/// Returns the text of the symbolic link at path, or nothing if path is not a symbolic link.
std::optional<std::string> LinkText(std::string const& path) {
    char target[PATH_MAX];
    ssize_t const length = readlink(path.c_str(), target, sizeof target);
    if (length < 0) {
        if (errno != EINVAL && errno != ENOENT)
            FailOf(path, "cannot be looked up");
        return std::nullopt;
    }
    if (length == 0 || static_cast<std::size_t>(length) == sizeof target)
        FailOf(path, "the symbolic link cannot be followed", ENAMETOOLONG);
    return std::string(target, static_cast<std::size_t>(length));
}

/// Follows the symbolic links from path, and calls visit with the directory and the text of each.
/// Returns where the file is, or is to be created. (Otherwise the link itself would be replaced,
/// and the file would stay as it is.)
template <typename Visit>
Place Resolve(std::string const& path, Visit visit) {
    constexpr int kMostLinks = 40; // As many as the kernel follows.
    Place place = Split(path);
    std::string end(path);
    for (int links = 0; auto const text = LinkText(end); ++links) {
        if (links == kMostLinks)
            FailOf(path, "cannot be looked up", ELOOP);
        visit(place.directory, *text);
        end = text->front() == '/' ? *text : place.directory + "/" + *text;
        place = Split(end);
    }
    if (place.name.empty())
        FailOf(path, "is not the name of a file", ENOENT);
    return place;
}

/// Throws if text, that of a symbolic link in directory, leads through a second link beside it: the
/// next exchange of that folder would take the edit with it.
void RefuseExchangedFolder(std::string const& path, std::string const& directory,
                           std::string const& text) {
    std::size_t const slash = text.find('/');
    if (slash == 0 || slash == std::string::npos)
        return;
    std::string const folder = directory + "/" + text.substr(0, slash);
    if (LinkText(folder))
        Refuse(path, "is a link into " + folder +
                         ", which is a link too: pointing that to another folder would undo the "
                         "edit; nothing is written");
}

/// Calls visit as Resolve does, for the links among the folders of a path.
template <typename Visit>
void VisitFolders(std::string path, Visit visit) {
    constexpr int kMostLinks = 40;
    int links = 0;
    for (std::size_t end = path.find('/', 1); end != std::string::npos && links < kMostLinks;
         end = path.find('/', end + 1)) {
        Place const place = Split(path.substr(0, end));
        auto const text = LinkText(path.substr(0, end));
        if (!text)
            continue;
        visit(place.directory, *text);
        path.replace(0, end, text->front() == '/' ? *text : place.directory + "/" + *text);
        end = 0;
        ++links;
    }
}

int OpenDirectory(std::string const& path) {
    int const directory = Uninterrupted(
        [&] { return open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK); });
    if (directory < 0)
        FailOf(path, "the directory cannot be opened");
    return directory;
}

/// Returns the status of the file to be replaced, or nothing if there is none.
std::optional<struct stat> OldFile(Descriptor const& directory, std::string const& name,
                                   std::string const& path) {
    struct stat status {};
    if (fstatat(directory.Number(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        if (errno != ENOENT)
            FailOf(path, "cannot be looked up");
        return std::nullopt;
    }
    if (!S_ISREG(status.st_mode))
        FailOf(path, "is not a regular file", EINVAL);
    return status;
}

/// The rights of the directory alone would let anybody who has them replace the file.
void RequireWritable(struct stat const& old, Descriptor const& directory, std::string const& name,
                     std::string const& path) {
    if (old.st_uid != geteuid() &&
        faccessat(directory.Number(), name.c_str(), W_OK, AT_EACCESS) != 0)
        FailOf(path, "cannot be written");
}

void RequireUnchanged(std::optional<struct stat> const& old, std::optional<FileStamp> const& stamp,
                      std::string const& path) {
    if (old ? stamp != FileStamp::Of(*old) : stamp.has_value())
        Refuse(path, "was changed by somebody else after it was read; nothing is written");
}

/// Makes those who replace files in one directory take turns, so that nobody else renames between
/// the last check of a file and our rename. A turn takes microseconds. If it is not free in time,
/// the save goes on without: anybody who may read the directory can lock it, and must not be able
/// to stop a save.
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
    // Closing alone would not end it: a process forked meanwhile has the directory open as well.
    ~Turn() { flock(directory_.Number(), LOCK_UN); }
    Turn(Turn const&) = delete;
    Turn& operator=(Turn const&) = delete;

  private:
    Descriptor const& directory_;
};

void SyncDirectory(Descriptor const& directory, std::string const& path) {
    if (Uninterrupted([&] { return fsync(directory.Number()); }) == 0)
        return;
    // Some file systems cannot sync a directory at all. The file has been replaced, nothing more
    // can be done for it, and reporting every edit as failed would help nobody.
    if (errno != EINVAL && errno != ENOTSUP)
        FailOf(path, "has been replaced, but this may not survive a power failure");
}

/// Opens the file at path for reading. Returns -1 if there is none but its directory exists.
int OpenForReading(std::string const& path) {
    int const file = Uninterrupted(
        [&] { return open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY); });
    if (file < 0) {
        if (errno != ENOENT)
            FailOf(path, "cannot be opened");
        struct stat status {};
        Place const place = Resolve(path, [](auto const&...) {});
        if (stat(place.directory.c_str(), &status) != 0)
            FailOf(path, "its directory cannot be looked up");
    }
    return file;
}

/// Returns the status of the open file. Throws if it is not a regular file.
struct stat StatusOf(Descriptor const& file, std::string const& path) {
    struct stat status {};
    if (fstat(file.Number(), &status) != 0)
        FailOf(path, "cannot be looked up");
    if (!S_ISREG(status.st_mode))
        FailOf(path, "is not a regular file", EINVAL);
    return status;
}

void RequireSize(std::size_t size, std::string const& path) {
    if (size > kLargestFile)
        FailOf(path,
               "has " + std::to_string(size) + " bytes, expected at most " +
                   std::to_string(kLargestFile),
               EFBIG);
}

/// Reads the open file from its current position to its end. size is the size to expect.
std::string ReadToEnd(Descriptor const& file, std::size_t size, std::string const& path) {
    std::string text(size + 1, '\0'); // One more, to see the end without growing the text.
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
            text.resize(2 * length); // The file has grown.
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
        // Somebody may be writing to the file in place, and half of it would pass for the whole.
        if (FileStamp::Of(StatusOf(file, path)) == before)
            return {std::move(text), before};
    }
    Refuse(path, "keeps changing while it is read");
}

void ReplaceFile(std::string const& path, std::string_view content,
                 std::optional<FileStamp>& stamp) {
    RequireSize(content.size(), path);
    auto const refuse = [&path](std::string const& directory, std::string const& text) {
        RefuseExchangedFolder(path, directory, text);
    };
    Place const target = Resolve(path, refuse);
    VisitFolders(target.directory + "/", refuse);
    // All checks that can be made before anything is written.
    Descriptor const directory(OpenDirectory(target.directory));
    RemoveLeftovers(directory, target.name);
    std::optional<struct stat> const old = OldFile(directory, target.name, path);
    if (old)
        RequireWritable(*old, directory, target.name, path);

    // Nobody else may read the new file before it has the old one's owner and mode.
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
