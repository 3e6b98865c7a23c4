// The lock that keeps two clients from editing the rule file at once.

#ifndef CALLRECORDINGCTL_EDIT_EDITLOCK_H
#define CALLRECORDINGCTL_EDIT_EDITLOCK_H

#include <chrono>
#include <string>

namespace callrecordingctl {

/// An exclusive flock on a file, from construction to destruction. The file stays; it is empty.
class EditLock {
  public:
    /// Makes the file where it is missing, and waits for the lock, saying so on standard error.
    /// Throws a Failure when patience is over or the file cannot be opened.
    EditLock(std::string const& path, std::chrono::seconds patience);
    ~EditLock();
    EditLock(EditLock const&) = delete;
    EditLock& operator=(EditLock const&) = delete;

  private:
    bool Try(std::string const& path, std::chrono::milliseconds patience) const;

    int file_;
};

} // namespace callrecordingctl

#endif
