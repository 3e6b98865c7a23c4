/// @file
/// The file that is written beside another one, to take over its name.

#ifndef PLATFORM_HOST_TEMPORARY_H
#define PLATFORM_HOST_TEMPORARY_H

#include <string>
#include <string_view>

#include <sys/stat.h>

#include "FileStamp.h"
#include "Posix.h"

namespace HostPlatform {

/// A new file in a directory, removed again unless it took over the other one's name. Its name is
/// that of the other file with ".PROCESS.NUMBER.tmp" behind it. While the object lives it holds a
/// lock (flock) on its file, so that others can tell it from one that a dead process has left:
/// process numbers are used again, and in containers many processes have the same. Throws
/// std::system_error.
class Temporary {
  public:
    /// path is the file that this one is made for, name what it is called in directory.
    Temporary(Descriptor const& directory, std::string const& name, mode_t mode,
              std::string const& path);
    ~Temporary();
    Temporary(Temporary const&) = delete;
    Temporary& operator=(Temporary const&) = delete;

    void TakeOwnerAndMode(struct stat const& old);
    void Write(std::string_view content);
    void Sync();
    void Close();
    void Rename(std::string const& name);

    /// What the file is as it stands; after the rename too, which counts as a change.
    FileStamp Stamp() const;

  private:
    int Create(std::string const& name, mode_t mode);

    std::string const& path_;
    Descriptor const& directory_;
    std::string name_;
    Descriptor file_;
    Descriptor open_; // The same open file, which keeps the lock when file_ is closed.
    bool isRenamed_ = false;
};

/// Removes what processes that have died left in directory for the file name, and nothing else.
/// What cannot be looked at or removed stays.
void RemoveLeftovers(Descriptor const& directory, std::string const& name) noexcept;

} // namespace HostPlatform

#endif
