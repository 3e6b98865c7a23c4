// The lock under which the rule file is edited.

#ifndef DATABASE_RULEFILELOCK_H
#define DATABASE_RULEFILELOCK_H

#include <chrono>
#include <stdexcept>
#include <string>

#include <sys/types.h>

namespace CallRecordingUtils {

/// Thrown when somebody else has the lock for longer than one would wait.
class RuleFileLockTimeout : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// An exclusive flock on the file ".lock" beside a rule file, from construction to destruction. The
/// file is empty and stays. It gets the rule file's owner, and may be opened by those only who may
/// write the rule file: who can open a file can lock it, and somebody who may read the rules must
/// not be able to stop every edit of them. Each object is a lock of its own, in one process as
/// well.
class RuleFileLock {
  public:
    /// ruleFile is the path of the rule file, whether it exists or not. Throws RuleFileLockTimeout
    /// when the lock is not free within patience, and std::system_error when its file cannot be
    /// made or opened; the texts say path and reason.
    RuleFileLock(std::string const& ruleFile, std::chrono::milliseconds patience);
    ~RuleFileLock();
    RuleFileLock(RuleFileLock const&) = delete;
    RuleFileLock& operator=(RuleFileLock const&) = delete;

  private:
    explicit RuleFileLock(std::string path);

    void Open(std::string const& ruleFile);
    void Close();
    void TakeOwnerAndMode(std::string const& ruleFile) const;
    void Wait(std::chrono::steady_clock::time_point end) const;
    bool IsStillThere() const;
    [[noreturn]] void Fail(char const* what) const;

    std::string path_;
    int file_ = -1;
    pid_t process_;
};

} // namespace CallRecordingUtils

#endif
