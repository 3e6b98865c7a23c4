/// @file
/// A temporary file that is written beside another one and then takes its name.

#ifndef PLATFORM_HOST_TEMPORARY_H
#define PLATFORM_HOST_TEMPORARY_H

#include <string>
#include <string_view>

#include <sys/stat.h>

#include "FileStamp.h"
#include "Posix.h"

namespace HostPlatform {

/// A new file in a directory, removed by the destructor unless it was renamed. Its name is that of
/// the file to be replaced with ".PROCESS.NUMBER.tmp" appended. The object holds a lock (flock) on
/// its file, which tells it from the leftover of a dead process: process numbers are reused, and in
/// containers many processes have the same. The operations throw std::system_error.
class Temporary {
  public:
    /// path is the file to be replaced, for messages; name is its name in directory. Both have to
    /// outlive the object.
    Temporary(Descriptor const& directory, std::string const& name, mode_t mode,
              std::string const& path);
    ~Temporary();
    Temporary(Temporary const&) = delete;
    Temporary& operator=(Temporary const&) = delete;

    /// Gives the file the mode, group and owner of old. A process that may not change owners stays
    /// the owner itself.
    void TakeOwnerAndMode(struct stat const& old);
    void Write(std::string_view content);
    void Sync();
    void Close();
    void Rename(std::string const& name);

    /// The file's stamp now. (Renaming changes it.)
    FileStamp Stamp() const;

  private:
    int Create(std::string const& name, mode_t mode);
    void TakeGroup(struct stat const& old);

    std::string const& path_;
    Descriptor const& directory_;
    std::string name_;
    Descriptor file_;
    Descriptor lock_; // A duplicate of file_ that keeps the lock after file_ is closed.
    bool isRenamed_ = false;
};

/// Removes the temporary files for the file name that dead processes left in directory, and nothing
/// else. What cannot be opened or removed stays.
void RemoveLeftovers(Descriptor const& directory, std::string const& name) noexcept;

} // namespace HostPlatform

#endif
