// Digests by libmd.

#include "replay/Digest.h"

#include <sys/types.h> // The next one needs it first.

#include <sha2.h>

namespace callrecordingctl {

std::string DigestOfFile(std::string const& path) {
    char digest[SHA256_DIGEST_STRING_LENGTH];
    return SHA256File(path.c_str(), digest) != nullptr ? digest : "";
}

} // namespace callrecordingctl
