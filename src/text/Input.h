// The bytes of a file that people hand in: plain or compressed with gzip, xz or zstd, in UTF-8 or
// UTF-16, from a path or from standard input.

#ifndef TEXT_INPUT_H
#define TEXT_INPUT_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "text/Unpacking.h"

namespace CallRecordingUtils {

class Input {
  public:
    /// Opens the file at path; "-" is standard input. Throws an Error that names it.
    explicit Input(std::string const& path);
    ~Input();
    Input(Input const&) = delete;
    Input& operator=(Input const&) = delete;

    /// Puts up to size bytes to `to`, as many as are there without waiting, and none at the end.
    /// UTF-16, which begins with a mark, becomes UTF-8. Throws a std::runtime_error with the reason
    /// alone when the rest cannot be read. Ends early when a signal comes in. REQUIRES: size >= 4.
    std::size_t Read(char* to, std::size_t size);

    /// Has wait called each time before more of the file is read, which may take as long as it
    /// likes.
    void BeforeReading(std::function<void()> wait) { wait_ = std::move(wait); }

    /// How many bytes of the file have been read, and its size if that is known, else 0.
    std::uint64_t Taken() const { return taken_; }
    std::uint64_t Size() const { return size_; }

  private:
    class Utf16;

    std::size_t ReadFile(char* to, std::size_t size);
    bool Fill();
    void BeginMember();
    std::size_t ReadUnpacked(char* to, std::size_t size);
    void LookForUtf16();

    int file_;
    std::uint64_t size_ = 0;
    std::uint64_t taken_ = 0;
    std::function<void()> wait_;
    std::vector<char> buffer_;
    Bytes read_;                         // What is in the buffer, as the file has it.
    bool isAtMember_ = true;             // It is not known yet how what comes next is packed.
    bool isBehindMember_ = false;        // A member came before.
    bool isStopped_ = false;             // By a signal.
    std::unique_ptr<Unpacker> unpacker_; // Null for what is plain.
    std::string first_;                  // The first bytes unpacked, while these are looked at.
    bool isLookedAt_ = false;
    std::unique_ptr<Utf16> utf16_;
};

} // namespace CallRecordingUtils

#endif
