// Compressed data: gzip, xz and zstd.

#ifndef TEXT_UNPACKING_H
#define TEXT_UNPACKING_H

#include <cstddef>
#include <memory>
#include <string_view>

namespace CallRecordingUtils {

/// What is left of a block of bytes.
struct Bytes {
    char const* data = nullptr;
    std::size_t size = 0;
};
struct Room {
    char* data = nullptr;
    std::size_t size = 0;
};

/// Unpacks one member of a compressed file: tools that compress append, so that a file may have
/// several.
class Unpacker {
  public:
    Unpacker() = default;
    Unpacker(Unpacker const&) = delete;
    Unpacker& operator=(Unpacker const&) = delete;
    virtual ~Unpacker() = default;

    /// Unpacks as much of from as there is and as to takes, and advances both. Returns true at the
    /// end of the member. Throws a std::runtime_error with the reason.
    virtual bool Unpack(Bytes& from, Room& to) = 0;
};

/// How a file begins.
enum class Beginning { Packed, Plain, TooShort };

/// TooShort: it takes more bytes to tell, unless there are no more.
Beginning LookAtBeginning(std::string_view bytes);

/// Returns the unpacker for what begins with bytes. REQUIRES: LookAtBeginning says Packed.
std::unique_ptr<Unpacker> MakeUnpacker(std::string_view bytes);

} // namespace CallRecordingUtils

#endif
