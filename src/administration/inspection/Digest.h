// The digest of a file, and its first digits as a short name for the state of the file.

#ifndef ADMINISTRATION_INSPECTION_DIGEST_H
#define ADMINISTRATION_INSPECTION_DIGEST_H

#include <string>
#include <string_view>

namespace CallRecordingUtils {

/// The SHA-256 digest of text, as 64 hexadecimal digits.
std::string DigestOf(std::string_view text);

/// The state of a file that has this digest, short enough to be typed.
inline std::string StateToken(std::string const& digest) {
    return digest.substr(0, 8);
}

} // namespace CallRecordingUtils

#endif
