// Reads a file block by block.

#include "records/counting/FileDigest.h"

#include <array>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "common/Sha256.h"

namespace CallRecordingUtils {

std::string DigestOfFile(std::string const& path) {
    int const file = path == "-" ? -1 : open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    struct stat before {};
    struct stat after {};
    Sha256 digest;
    static thread_local std::array<char, std::size_t{64} * 1024> block;
    ssize_t count = -1;
    if (file >= 0 && fstat(file, &before) == 0 && S_ISREG(before.st_mode))
        while ((count = read(file, block.data(), block.size())) > 0)
            digest.Add({block.data(), static_cast<std::size_t>(count)});
    bool const isSame = count == 0 && fstat(file, &after) == 0 && after.st_size == before.st_size &&
                        after.st_mtim.tv_sec == before.st_mtim.tv_sec &&
                        after.st_mtim.tv_nsec == before.st_mtim.tv_nsec;
    if (file >= 0)
        close(file);
    return isSame ? digest.Digits() : "";
}

} // namespace CallRecordingUtils
