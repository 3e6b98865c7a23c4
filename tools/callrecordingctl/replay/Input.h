// The bytes of a call file: plain or compressed with gzip, from a path or from standard input.

#ifndef CALLRECORDINGCTL_REPLAY_INPUT_H
#define CALLRECORDINGCTL_REPLAY_INPUT_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include <zlib.h>

#include "Failure.h"

namespace callrecordingctl {

/// A call file that cannot be used at all. what() names the file.
class CallFileError : public Failure {
  public:
    explicit CallFileError(std::string const& message) : Failure(kExitUnreadable, message) {}
};

class Input {
  public:
    /// Opens the file at path; "-" is standard input. Throws a CallFileError.
    explicit Input(std::string const& path);

    /// Fills to with up to size bytes; fewer at the end, then none. Throws a std::runtime_error
    /// with the reason alone when the rest cannot be read. Ends early when a signal comes in.
    std::size_t Read(char* to, std::size_t size);

    /// How much of the file itself has been taken, and its size where it is known, else 0.
    std::uint64_t Taken() const;
    std::uint64_t Size() const { return size_; }

  private:
    struct Closer {
        void operator()(gzFile_s* file) const { gzclose_r(file); }
    };
    std::unique_ptr<gzFile_s, Closer> file_;
    std::uint64_t size_ = 0;
};

} // namespace callrecordingctl

#endif
