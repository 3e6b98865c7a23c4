/// @file
/// A lock that keeps other editors out while the rule file is edited.

#ifndef CALLRECORDINGUTILS_CRULEFILELOCK_H
#define CALLRECORDINGUTILS_CRULEFILELOCK_H

#include <cstdint>
#include <memory>
#include <string>

#include <callrecordingutils/Export.h>

namespace CallRecordingUtils {

class RuleFileLock;

/// Holds the lock from construction to destruction. The client callrecordingctl takes the same lock
/// for each of its edits, and so should every program that edits:
///
///     CRuleFileLock const lock(5000);
///     if (!lock.IsHeld())
///         return Report(lock.GetFailure());
///     database.Reload();           // To edit what the file holds now.
///     database.MoveRule("7", 0);
///
/// The edits of CCallRecordingDB do not take the lock themselves. Without it, an edit fails if
/// somebody else saves the file first; nothing is lost, but the edit has to be repeated. Besides,
/// the rules may have got other identifiers between a Reload and an edit. The lock does not stop
/// editors that do not take it.
///
/// It is an exclusive flock on the file "callrecordingdb.lock" beside the rule file, which is found
/// as by CCallRecordingDB. That file is created if it is missing, and stays. It gets the owner and
/// group of the rule file, as far as the process may set them, and only those who may write the
/// rule file can open it. It is refused if it is a symbolic link, not a regular file, has more than
/// one name, or belongs to neither the owner nor the group of the rule file.
///
/// The lock is made of POSIX calls on every platform; a device's platform has no part in it.
///
/// Threads: objects are independent. Two of them exclude each other within one process too, so a
/// thread that holds one must not wait for another. Waiting cannot be cancelled. A process forked
/// meanwhile does not hold the lock, and cannot release it.
class CALLRECORDINGUTILS_EXPORT CRuleFileLock {
  public:
    /// Waits for the lock for at most timeout milliseconds; with 0 it tries once. Never throws:
    /// IsHeld says whether it succeeded.
    explicit CRuleFileLock(std::uint32_t timeout) noexcept;
    ~CRuleFileLock();

    CRuleFileLock(CRuleFileLock const&) = delete;
    CRuleFileLock& operator=(CRuleFileLock const&) = delete;

    /// Returns whether the lock is held.
    bool IsHeld() const noexcept;

    /// Returns why the lock is not held, for people to read, beginning with the path of its
    /// file; the empty text if it is held.
    std::string GetFailure() const;

  private:
    std::unique_ptr<RuleFileLock> mLock;
    std::string mFailure;
};

} // namespace CallRecordingUtils

#endif
