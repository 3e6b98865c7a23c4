// SHA-256, as libmd computes it.

#include "administration/inspection/Digest.h"

#include <cstdint>
#include <sys/types.h>

#include <sha256.h>

namespace CallRecordingUtils {

std::string DigestOf(std::string_view text) {
    std::string digits(SHA256_DIGEST_STRING_LENGTH, '\0');
    SHA256Data(reinterpret_cast<std::uint8_t const*>(text.data()), text.size(), digits.data());
    digits.pop_back(); // The NUL.
    return digits;
}

} // namespace CallRecordingUtils
