// Holds a text in a file without a name.

#include "administration/inspection/MemoryFile.h"

#include <cerrno>
#include <system_error>

#include <sys/mman.h>
#include <unistd.h>

#include <fmt/format.h>

namespace CallRecordingUtils {

MemoryFile::MemoryFile(std::string_view text) : file_(memfd_create("rules", MFD_CLOEXEC)) {
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

MemoryFile::~MemoryFile() {
    close(file_);
}

std::string MemoryFile::Path() const {
    return fmt::format("/proc/self/fd/{}", file_);
}

} // namespace CallRecordingUtils
