// Reads a file. zlib passes on what is not compressed.

#include "text/Input.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "common/Error.h"

namespace CallRecordingUtils {

Input::Input(std::string const& path) {
    int const file = path == "-" ? dup(STDIN_FILENO) : open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat status {};
    if (file < 0 || fstat(file, &status) != 0 || S_ISDIR(status.st_mode)) {
        std::string const reason = std::strerror(file < 0 ? errno : EISDIR);
        if (file >= 0)
            close(file);
        throw Error(Error::Kind::Unreadable, path + ": cannot be read: " + reason);
    }
    size_ = S_ISREG(status.st_mode) ? static_cast<std::uint64_t>(status.st_size) : 0;
    file_.reset(gzdopen(file, "rb"));
    if (file_ == nullptr) {
        close(file);
        throw std::bad_alloc();
    }
    gzbuffer(file_.get(), 128 * 1024);
}

std::size_t Input::Read(char* to, std::size_t size) {
    int const count = gzread(file_.get(), to, static_cast<unsigned>(size));
    if (count > 0)
        return static_cast<std::size_t>(count);
    int code = Z_OK;
    std::string const reason = gzerror(file_.get(), &code); // "<fd:3>: unexpected end of file"
    if (code == Z_OK || code == Z_STREAM_END || (code == Z_ERRNO && errno == EINTR))
        return 0;
    throw std::runtime_error(code == Z_ERRNO
                                 ? std::strerror(errno)
                                 : "compressed data: " + reason.substr(reason.find(": ") + 2));
}

std::uint64_t Input::Taken() const {
    z_off_t const offset = gzoffset(file_.get());
    return offset > 0 ? static_cast<std::uint64_t>(offset) : 0;
}

} // namespace CallRecordingUtils
