// Makes, opens and holds the lock file.

#include "database/RuleFileLock.h"

#include <cerrno>
#include <system_error>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace CallRecordingUtils {
namespace {

/// What decides who may edit: the rule file, or its directory as long as there is none.
bool LookUp(std::string const& ruleFile, struct stat& status) {
    if (stat(ruleFile.c_str(), &status) == 0)
        return true;
    std::string const directory = ruleFile.substr(0, ruleFile.rfind('/') + 1) + ".";
    return stat(directory.c_str(), &status) == 0;
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
        Open(ruleFile);
        Wait(end);
    } while (!IsStillThere()); // Others lock the file that has the name now.
}

RuleFileLock::~RuleFileLock() {
    // To close the file is not enough: a process forked meanwhile has it open as well. And such a
    // process must not give back what its parent holds.
    if (file_ >= 0 && process_ == getpid())
        flock(file_, LOCK_UN);
    Close();
}

void RuleFileLock::Open(std::string const& ruleFile) {
    file_ = open(path_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY,
                 0600);
    if (file_ < 0)
        Fail("cannot be opened");
    TakeOwnerAndMode(ruleFile);
}

void RuleFileLock::Close() {
    if (file_ >= 0)
        close(std::exchange(file_, -1));
}

/// Does what this process may do; another one that edits may be able to do more.
void RuleFileLock::TakeOwnerAndMode(std::string const& ruleFile) const {
    struct stat editors {};
    struct stat own {};
    if (!LookUp(ruleFile, editors) || fstat(file_, &own) != 0)
        return;
    if ((own.st_uid != editors.st_uid || own.st_gid != editors.st_gid) &&
        fchown(file_, editors.st_uid, editors.st_gid) != 0)
        return; // The mode is for an owner and a group that the file does not have.
    mode_t const mayWrite = editors.st_mode & 0222;
    mode_t const mode = mayWrite | (mayWrite << 1); // And read: that is what opening takes.
    if ((own.st_mode & 07777) != mode && fchmod(file_, mode) != 0)
        return;
}

void RuleFileLock::Wait(std::chrono::steady_clock::time_point end) const {
    constexpr std::chrono::milliseconds kPause(5);
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
    return fstat(file_, &own) == 0 && stat(path_.c_str(), &named) == 0 && IsSameFile(own, named);
}

void RuleFileLock::Fail(char const* what) const {
    throw std::system_error(errno, std::generic_category(), path_ + ": " + what);
}

} // namespace CallRecordingUtils
