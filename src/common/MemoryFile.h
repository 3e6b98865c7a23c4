// A text as a file that only this process sees, for what reads files by their path.

#ifndef COMMON_MEMORYFILE_H
#define COMMON_MEMORYFILE_H

#include <cerrno>
#include <string>
#include <string_view>
#include <system_error>

#include <sys/mman.h>
#include <unistd.h>

namespace CallRecordingUtils {

class MemoryFile {
  public:
    /// Throws std::system_error when the system does not make one.
    explicit MemoryFile(std::string_view text) : file_(memfd_create("rules", MFD_CLOEXEC)) {
        while (file_ >= 0 && !text.empty()) {
            ssize_t const count = write(file_, text.data(), text.size());
            if (count < 0 && errno != EINTR)
                break;
            text.remove_prefix(count > 0 ? static_cast<std::size_t>(count) : 0);
        }
        if (file_ >= 0 && text.empty())
            return;
        int const error = errno;
        if (file_ >= 0)
            close(file_);
        throw std::system_error(error, std::generic_category(), "a file in memory");
    }
    ~MemoryFile() { close(file_); }
    MemoryFile(MemoryFile const&) = delete;
    MemoryFile& operator=(MemoryFile const&) = delete;

    /// Good for as long as the object lives, where /proc is mounted.
    std::string Path() const { return "/proc/self/fd/" + std::to_string(file_); }

  private:
    int file_;
};

} // namespace CallRecordingUtils

#endif
