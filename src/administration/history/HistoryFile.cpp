// Creates, checks and hands over the file of the history.

#include "administration/history/HistoryFile.h"

#include <algorithm>
#include <cstdio>
#include <ctime>

#include <fcntl.h>
#include <sys/stat.h>

#include <host/Posix.h>

namespace CallRecordingUtils {
namespace {

using HostPlatform::Descriptor;
using HostPlatform::FailOf;

struct stat StatusOf(int file, std::string const& path) {
    struct stat status {};
    if (fstat(file, &status) != 0)
        FailOf(path, "cannot be looked up");
    return status;
}

/// Opens the file at path as it is; -1 if there is none.
int OpenAsItIs(std::string const& path) {
    int const file = open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (file < 0 && errno == ELOOP)
        HostPlatform::Refuse(path, "is a symbolic link");
    if (file < 0 && errno != ENOENT)
        FailOf(path, "cannot be opened");
    return file;
}

void RequireOurs(struct stat const& own, std::string const& path, std::string const& ruleFile) {
    if (!S_ISREG(own.st_mode))
        HostPlatform::Refuse(path, "is not a regular file");
    if (own.st_nlink != 1)
        HostPlatform::Refuse(path, "has more than one name");
    struct stat rules {};
    if (stat(ruleFile.c_str(), &rules) == 0 && own.st_uid != rules.st_uid &&
        own.st_gid != rules.st_gid)
        HostPlatform::Refuse(path, "belongs to neither the owner nor the group of the rule file");
}

/// Who may not change owners changes the group, which several editors share. Returns whether the
/// file then has the group of the rule file.
bool TakeOwner(int file, struct stat const& own, struct stat const& rules) {
    constexpr uid_t kSameOwner = static_cast<uid_t>(-1);
    bool const hasGroup = own.st_gid == rules.st_gid;
    return (own.st_uid == rules.st_uid && hasGroup) ||
           fchown(file, rules.st_uid, rules.st_gid) == 0 || hasGroup ||
           fchown(file, kSameOwner, rules.st_gid) == 0;
}

/// Failures are ignored: only its owner, or root, may change a file, and it is readable to those
/// who could read it so far.
void TakeOwnerAndMode(int file, struct stat const& own, std::string const& ruleFile) {
    struct stat rules {};
    if (stat(ruleFile.c_str(), &rules) != 0)
        return;
    bool const hasGroup = TakeOwner(file, own, rules);
    mode_t const mode = rules.st_mode & (hasGroup ? 0666 : 0600);
    if ((own.st_mode & 07777) != mode)
        (void)fchmod(file, mode);
}

/// Under another name first, so that nobody ever finds the file without its owner and mode.
void Create(std::string const& path, std::string const& ruleFile) {
    std::string const unfinished = path + ".new";
    (void)unlink(unfinished.c_str()); // What a killed process has left.
    Descriptor const file(open(unfinished.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (file.Number() < 0)
        FailOf(path, "cannot be created");
    TakeOwnerAndMode(file.Number(), StatusOf(file.Number(), path), ruleFile);
    if (std::rename(unfinished.c_str(), path.c_str()) == 0)
        return;
    int const error = errno;
    (void)unlink(unfinished.c_str());
    FailOf(path, "cannot be created", error);
}

} // namespace

std::string HistoryPath(std::string const& ruleFile) {
    return ruleFile + ".history";
}

bool HasHistoryFile(std::string const& ruleFile) {
    std::string const path = HistoryPath(ruleFile);
    Descriptor const file(OpenAsItIs(path));
    if (file.Number() < 0)
        return false;
    RequireOurs(StatusOf(file.Number(), path), path, ruleFile);
    return true;
}

void PrepareHistoryFile(std::string const& ruleFile) {
    std::string const path = HistoryPath(ruleFile);
    Descriptor const file(OpenAsItIs(path));
    if (file.Number() < 0)
        return Create(path, ruleFile);
    struct stat const own = StatusOf(file.Number(), path);
    RequireOurs(own, path, ruleFile);
    TakeOwnerAndMode(file.Number(), own, ruleFile);
}

std::int64_t ChangeTimeOf(std::string const& ruleFile) {
    struct stat status {};
    std::int64_t const now = std::time(nullptr);
    // The file system's clock may be a little ahead, and the next edit must not come before this.
    return stat(ruleFile.c_str(), &status) == 0 ? std::min<std::int64_t>(status.st_ctime, now)
                                                : now;
}

} // namespace CallRecordingUtils
