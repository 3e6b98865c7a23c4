/// @file
/// Tells whether a file is still the one that was read.

#ifndef PLATFORM_HOST_FILESTAMP_H
#define PLATFORM_HOST_FILESTAMP_H

#include <ctime>

#include <sys/stat.h>

namespace HostPlatform {

struct FileStamp {
    dev_t device;
    ino_t inode;
    off_t size;
    timespec written;
    timespec changed;

    static FileStamp Of(struct stat const& status) {
        return {status.st_dev, status.st_ino, status.st_size, status.st_mtim, status.st_ctim};
    }

    bool operator==(FileStamp const& other) const {
        return device == other.device && inode == other.inode && size == other.size &&
               IsEqual(written, other.written) && IsEqual(changed, other.changed);
    }
    bool operator!=(FileStamp const& other) const { return !(*this == other); }

  private:
    static bool IsEqual(timespec const& a, timespec const& b) {
        return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
    }
};

} // namespace HostPlatform

#endif
