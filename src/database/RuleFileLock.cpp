// Creates, opens and holds the lock file.

#include "database/RuleFileLock.h"

#include <cerrno>
#include <system_error>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace CallRecordingUtils {
namespace {

/// A new lock file has this bit, which means nothing on files, until it has its owner and mode. If
/// the process is killed before that, the next one finishes the file instead of refusing it.
constexpr mode_t kUnfinished = S_ISVTX;

constexpr std::chrono::milliseconds kPause(5);

bool IsUnfinished(struct stat const& lock) {
    return (lock.st_mode & kUnfinished) != 0 && lock.st_size == 0;
}

/// The mode of a lock file that only those may open who may write the rule file. Opening takes read
/// and write permission.
mode_t LockMode(struct stat const& rules) {
    mode_t const mayWrite = rules.st_mode & 0222;
    return mayWrite | (mayWrite << 1);
}

bool IsSameFile(struct stat const& a, struct stat const& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

} // namespace

RuleFileLock::RuleFileLock(std::string path) : path_(std::move(path)), process_(getpid()) {}

RuleFileLock::RuleFileLock(std::string const& ruleFile, std::chrono::milliseconds patience)
    : RuleFileLock(ruleFile + ".lock") {
    auto const end = std::chrono::steady_clock::now() + patience;
    do {
        Close();
        Open();
        Prepare(ruleFile);
        Wait(end);
    } while (!IsStillThere()); // Others would lock the file that has the name now.
}

RuleFileLock::~RuleFileLock() {
    // Closing is not enough: a process forked meanwhile has the file open as well. Nor may such a
    // process release the lock of its parent.
    if (file_ >= 0 && process_ == getpid())
        flock(file_, LOCK_UN);
    Close();
}

void RuleFileLock::Open() {
    constexpr int kFlags = O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;
    constexpr int kMostTries = 20;
    for (int tries = 1; file_ < 0; ++tries) {
        file_ = open(path_.c_str(), kFlags, kUnfinished | 0600);
        if (file_ >= 0)
            return;
        struct stat named {};
        bool const isThere = lstat(path_.c_str(), &named) == 0;
        if (isThere && S_ISLNK(named.st_mode))
            Refuse("is a symbolic link");
        // Another user may be about to finish it.
        if (errno != EACCES || !isThere || !IsUnfinished(named) || tries == kMostTries)
            Fail("cannot be opened");
        std::this_thread::sleep_for(kPause);
    }
}

void RuleFileLock::Close() {
    if (file_ >= 0)
        close(std::exchange(file_, -1));
}

/// Refuses the open file, or lets those open it who may write the rule file.
void RuleFileLock::Prepare(std::string const& ruleFile) const {
    std::string const directory = ruleFile.substr(0, ruleFile.rfind('/') + 1) + ".";
    struct stat own {};
    struct stat rules {};
    bool const hasRules = stat(ruleFile.c_str(), &rules) == 0;
    if (fstat(file_, &own) != 0 || (!hasRules && stat(directory.c_str(), &rules) != 0))
        Fail("cannot be looked up");
    if (!S_ISREG(own.st_mode))
        Refuse("is not a regular file");
    if (own.st_nlink > 1)
        Refuse("has more than one name");
    bool const isNew = IsUnfinished(own);
    bool const belongs = own.st_uid == rules.st_uid || own.st_gid == rules.st_gid;
    if (!belongs && !isNew && !hasRules)
        return;
    bool const hasGroup = (belongs || isNew) && TakeOwner(own, rules);
    if (!belongs && !hasGroup && hasRules) {
        if (isNew)
            unlink(path_.c_str()); // Nobody else could open it.
        Refuse("belongs to neither the owner nor the group of the rule file");
    }
    mode_t const mode = LockMode(rules) & (hasGroup ? 0777 : 0700);
    if ((own.st_mode & 07777) != mode)
        fchmod(file_, mode); // Fails if somebody else owns the file, who has set its mode then.
}

/// Returns whether the file then has the group of the rule file. A process that may not change
/// owners changes the group alone.
bool RuleFileLock::TakeOwner(struct stat const& own, struct stat const& rules) const {
    constexpr uid_t kSameOwner = static_cast<uid_t>(-1);
    bool const hasGroup = own.st_gid == rules.st_gid;
    return (own.st_uid == rules.st_uid && hasGroup) ||
           fchown(file_, rules.st_uid, rules.st_gid) == 0 || hasGroup ||
           fchown(file_, kSameOwner, rules.st_gid) == 0;
}

void RuleFileLock::Wait(std::chrono::steady_clock::time_point end) const {
    while (flock(file_, LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR)
            Fail("cannot be locked");
        if (std::chrono::steady_clock::now() >= end)
            throw RuleFileLockTimeout(path_ + ": another process is editing the rules");
        std::this_thread::sleep_for(kPause);
    }
}

bool RuleFileLock::IsStillThere() const {
    struct stat own {};
    struct stat named {};
    return fstat(file_, &own) == 0 && lstat(path_.c_str(), &named) == 0 && IsSameFile(own, named);
}

void RuleFileLock::Fail(char const* what) const {
    throw std::system_error(errno, std::generic_category(), path_ + ": " + what);
}

void RuleFileLock::Refuse(char const* what) const {
    throw std::runtime_error(path_ + ": " + what);
}

} // namespace CallRecordingUtils
