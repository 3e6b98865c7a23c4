/// @file
/// The lock that keeps other editors out while the rule file is edited.

#ifndef CALLRECORDINGUTILS_CRULEFILELOCK_H
#define CALLRECORDINGUTILS_CRULEFILELOCK_H

#include <cstdint>
#include <memory>
#include <string>

#include <callrecordingutils/Export.h>

namespace CallRecordingUtils {

class RuleFileLock;

/// Holds the lock from construction to destruction. The client callrecordingctl takes the same one
/// around each of its edits, and so should every program that edits:
///
///     CRuleFileLock const lock(5000);
///     if (!lock.IsHeld())
///         return Report(lock.GetFailure());
///     database.Reload();           // What is edited is what the file holds now.
///     database.MoveRule("7", 0);
///
/// CCallRecordingDB's edits take no lock themselves. Without one, an edit that another one
/// overtakes fails and says so; nothing is lost, but it has to be made again. And between a Reload
/// and an edit the rules may have got other identifiers. Editors that do not ask for the lock are
/// not held off.
///
/// It is an exclusive flock on the file "callrecordingdb.lock" beside the rule file, which is found
/// as by CCallRecordingDB. The file is made when it is missing, and stays; only those can open it
/// who may write the rule file.
///
/// Threads: objects are independent; two of them exclude each other in one process too, so a thread
/// that holds one must not wait for another. Waiting cannot be cancelled. A process forked
/// meanwhile neither has the lock nor gives it back.
class CALLRECORDINGUTILS_EXPORT CRuleFileLock {
  public:
    /// Waits for the lock for at most so many milliseconds; with 0 it tries once. Never throws:
    /// afterwards IsHeld says whether the lock is held.
    explicit CRuleFileLock(std::uint32_t timeout) noexcept;
    ~CRuleFileLock();

    CRuleFileLock(CRuleFileLock const&) = delete;
    CRuleFileLock& operator=(CRuleFileLock const&) = delete;

    /// Returns whether the lock is held.
    bool IsHeld() const noexcept;

    /// Returns why the lock is not held, with the path of its file and the system's words, for
    /// people to read; the empty text when it is held.
    std::string GetFailure() const;

  private:
    std::unique_ptr<RuleFileLock> mLock;
    std::string mFailure;
};

} // namespace CallRecordingUtils

#endif
