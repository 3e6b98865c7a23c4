// Calls zlib, liblzma and libzstd. None of them may take more memory than a call file is worth.

#include "text/Unpacking.h"

#include <new>
#include <stdexcept>
#include <string>

#include <lzma.h>
#include <zlib.h>
#include <zstd.h>

namespace CallRecordingUtils {
namespace {

[[noreturn]] void Fail(char const* reason) {
    throw std::runtime_error(std::string("compressed data: ") + reason);
}

class GzipUnpacker : public Unpacker {
  public:
    GzipUnpacker() {
        constexpr int kGzipOnly = 15 + 16;
        if (inflateInit2(&stream_, kGzipOnly) != Z_OK)
            throw std::bad_alloc();
    }
    ~GzipUnpacker() override { inflateEnd(&stream_); }

    bool Unpack(Bytes& from, Room& to) override {
        stream_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(from.data));
        stream_.avail_in = static_cast<uInt>(from.size);
        stream_.next_out = reinterpret_cast<Bytef*>(to.data);
        stream_.avail_out = static_cast<uInt>(to.size);
        int const code = inflate(&stream_, Z_NO_FLUSH);
        from = {from.data + (from.size - stream_.avail_in), stream_.avail_in};
        to = {to.data + (to.size - stream_.avail_out), stream_.avail_out};
        if (code == Z_MEM_ERROR)
            throw std::bad_alloc();
        if (code != Z_OK && code != Z_STREAM_END && code != Z_BUF_ERROR)
            Fail(stream_.msg != nullptr ? stream_.msg : "it is damaged");
        return code == Z_STREAM_END;
    }

  private:
    z_stream stream_{};
};

class XzUnpacker : public Unpacker {
  public:
    XzUnpacker() {
        constexpr std::uint64_t kMostMemory = std::uint64_t{256} << 20; // "xz -9" takes 65 MiB.
        if (lzma_stream_decoder(&stream_, kMostMemory, 0) != LZMA_OK)
            throw std::bad_alloc();
    }
    ~XzUnpacker() override { lzma_end(&stream_); }

    bool Unpack(Bytes& from, Room& to) override {
        stream_.next_in = reinterpret_cast<std::uint8_t const*>(from.data);
        stream_.avail_in = from.size;
        stream_.next_out = reinterpret_cast<std::uint8_t*>(to.data);
        stream_.avail_out = to.size;
        lzma_ret const code = lzma_code(&stream_, LZMA_RUN);
        from = {from.data + (from.size - stream_.avail_in), stream_.avail_in};
        to = {to.data + (to.size - stream_.avail_out), stream_.avail_out};
        if (code == LZMA_MEM_ERROR)
            throw std::bad_alloc();
        if (code == LZMA_MEMLIMIT_ERROR)
            Fail("it takes more than 256 MiB of memory to unpack");
        if (code != LZMA_OK && code != LZMA_STREAM_END && code != LZMA_BUF_ERROR)
            Fail("it is damaged");
        return code == LZMA_STREAM_END;
    }

  private:
    lzma_stream stream_ = LZMA_STREAM_INIT;
};

/// libzstd itself refuses what takes more than 128 MiB.
class ZstdUnpacker : public Unpacker {
  public:
    ZstdUnpacker() : stream_(ZSTD_createDStream()) {
        if (stream_ == nullptr)
            throw std::bad_alloc();
    }
    ~ZstdUnpacker() override { ZSTD_freeDStream(stream_); }

    bool Unpack(Bytes& from, Room& to) override {
        ZSTD_inBuffer in{from.data, from.size, 0};
        ZSTD_outBuffer out{to.data, to.size, 0};
        std::size_t const code = ZSTD_decompressStream(stream_, &out, &in);
        if (ZSTD_isError(code) != 0)
            Fail(ZSTD_getErrorName(code));
        from = {from.data + in.pos, from.size - in.pos};
        to = {to.data + out.pos, to.size - out.pos};
        return code == 0;
    }

  private:
    ZSTD_DStream* stream_;
};

using namespace std::string_view_literals;
constexpr std::string_view kGzip = "\x1f\x8b"sv;
constexpr std::string_view kXz = "\xfd"
                                 "7zXZ\0"sv;
constexpr std::string_view kZstd = "\x28\xb5\x2f\xfd"sv;

bool Begins(std::string_view bytes, std::string_view with) {
    return bytes.substr(0, with.size()) == with;
}

} // namespace

Beginning LookAtBeginning(std::string_view bytes) {
    for (std::string_view const mark : {kGzip, kXz, kZstd}) {
        if (Begins(bytes, mark))
            return Beginning::Packed;
        if (Begins(mark, bytes))
            return Beginning::TooShort;
    }
    return Beginning::Plain;
}

std::unique_ptr<Unpacker> MakeUnpacker(std::string_view bytes) {
    if (Begins(bytes, kGzip))
        return std::make_unique<GzipUnpacker>();
    if (Begins(bytes, kXz))
        return std::make_unique<XzUnpacker>();
    return std::make_unique<ZstdUnpacker>();
}

} // namespace CallRecordingUtils
