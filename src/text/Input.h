// The bytes of a file that people hand in: plain or compressed with gzip, from a path or from
// standard input.

#ifndef TEXT_INPUT_H
#define TEXT_INPUT_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include <zlib.h>

namespace CallRecordingUtils {

class Input {
  public:
    /// Opens the file at path; "-" is standard input. Throws an Error that names it.
    explicit Input(std::string const& path);

    /// Fills to with up to size bytes; fewer at the end, then none. Throws a std::runtime_error
    /// with the reason alone when the rest cannot be read. Ends early when a signal comes in.
    std::size_t Read(char* to, std::size_t size);

    /// How many bytes of the file have been read, and its size if that is known, else 0.
    std::uint64_t Taken() const;
    std::uint64_t Size() const { return size_; }

  private:
    struct Closer {
        void operator()(gzFile_s* file) const { gzclose_r(file); }
    };
    std::unique_ptr<gzFile_s, Closer> file_;
    std::uint64_t size_ = 0;
};

} // namespace CallRecordingUtils

#endif
