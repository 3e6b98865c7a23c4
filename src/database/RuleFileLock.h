// The lock under which the rule file is edited.

#ifndef DATABASE_RULEFILELOCK_H
#define DATABASE_RULEFILELOCK_H

#include <chrono>
#include <stdexcept>
#include <string>

#include <sys/stat.h>
#include <sys/types.h>

namespace CallRecordingUtils {

/// Thrown when somebody else holds the lock for longer than the caller would wait.
class RuleFileLockTimeout : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// An exclusive flock on an empty file beside the rule file, named after it with ".lock" appended,
/// held from construction to destruction. The file is created if it is missing, and stays. Each
/// object is a lock of its own, within a process too.
///
/// Whoever can open a file can lock it, so only those may open this one who may write the rule
/// file: somebody who may merely read the rules must not be able to stop every edit. The lock's
/// file therefore gets the owner, the group and the mode of the rule file, as far as the process
/// may do that. As long as there is no rule file, its directory stands in for it.
///
/// Not a service of the platform: the lock is an agreement between programs, so it is made of the
/// same POSIX calls whichever platform the library is built for.
class RuleFileLock {
  public:
    /// ruleFile is the path of the rule file, which need not exist. Throws RuleFileLockTimeout if
    /// the lock is not free within patience, and an exception derived from std::runtime_error if
    /// its file cannot be created or opened, or is refused. The text gives path and reason.
    ///
    /// A file is refused, and not changed, if it is a symbolic link or not a regular file, has more
    /// than one name, or belongs to neither the owner nor the group of the rule file. It is not
    /// ours then, and giving it the rule file's owner and mode might give away somebody's file.
    RuleFileLock(std::string const& ruleFile, std::chrono::milliseconds patience);
    ~RuleFileLock();
    RuleFileLock(RuleFileLock const&) = delete;
    RuleFileLock& operator=(RuleFileLock const&) = delete;

  private:
    explicit RuleFileLock(std::string path);

    void Open();
    void Close();
    void Prepare(std::string const& ruleFile) const;
    bool TakeOwner(struct stat const& own, struct stat const& rules) const;
    void Wait(std::chrono::steady_clock::time_point end) const;
    bool IsStillThere() const;
    [[noreturn]] void Fail(char const* what) const;
    [[noreturn]] void Refuse(char const* what) const;

    std::string path_;
    int file_ = -1;
    pid_t process_;
};

} // namespace CallRecordingUtils

#endif
