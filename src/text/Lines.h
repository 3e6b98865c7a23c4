// The lines of a call file, in bounded memory.

#ifndef TEXT_LINES_H
#define TEXT_LINES_H

#include <cstddef>
#include <string>
#include <string_view>

#include "text/Input.h"

namespace CallRecordingUtils {

/// Reads line by line. The lines of a record that goes over several are kept, so that reading can
/// go back when it turns out to be none.
class Lines {
  public:
    /// What a line, and what is kept, may take. No call record comes near it.
    static constexpr std::size_t kMost = std::size_t{256} * 1024;

    explicit Lines(Input& input) : input_(input) {}

    /// Goes to the next line: Next when a record begins there, Continue when the one that began
    /// with the last Next goes on. Returns false at the end. Throws as Input::Read does.
    bool Next();
    bool Continue();

    /// The line without its end, of one that is too long the beginning. Valid until the next call.
    std::string_view Text() const { return std::string_view(buffer_).substr(begin_, length_); }
    std::size_t Number() const { return number_; } // Counted from 1.
    bool IsTooLong() const { return isTooLong_; }

    /// Makes this line, with which a record begins, the next one.
    void Again();
    /// The bytes of the record so far. What calls Continue must end at kMost.
    std::size_t RecordBytes() const { return next_ - kept_; }
    /// Makes the second line of the record the next one. The first must not be too long.
    void GoBack();

  private:
    bool Fill();
    void SkipRestOfLine();

    Input& input_;
    std::string buffer_;
    std::size_t kept_ = 0;   // Where in the buffer the record begins; what is before may go,
    std::size_t second_ = 0; // and where its second line.
    std::size_t begin_ = 0;  // This line,
    std::size_t length_ = 0;
    std::size_t next_ = 0; // and where the next one begins.
    std::size_t number_ = 0;
    std::size_t keptNumber_ = 0;
    bool isTooLong_ = false; // Its rest is passed over when the next one is asked for.
};

} // namespace CallRecordingUtils

#endif
