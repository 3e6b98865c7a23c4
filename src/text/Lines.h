// The lines of a file, in bounded memory.

#ifndef TEXT_LINES_H
#define TEXT_LINES_H

#include <cstddef>
#include <string>
#include <string_view>

#include "text/Input.h"

namespace CallRecordingUtils {

/// Reads line by line; LF, CRLF and a CR alone end a line. The lines of a record that spans several
/// are kept, so that reading can go back when they turn out not to be a record.
class Lines {
  public:
    /// The most bytes of a line, and of what is kept. No call record comes near it.
    static constexpr std::size_t kMost = std::size_t{256} * 1024;

    explicit Lines(Input& input) : input_(input) {}

    /// Goes to the next line: Next where a record begins, Continue where the record of the last
    /// Next goes on. Returns false at the end. Throws as Input::Read does.
    bool Next();
    bool Continue();

    /// The line without its line end, or the beginning of one that is too long. Valid until the
    /// next call.
    std::string_view Text() const { return std::string_view(buffer_).substr(begin_, length_); }
    std::size_t Number() const { return number_; } // Counted from 1.
    /// Whether the line ends in a carriage return alone. Text is not valid afterwards.
    bool EndsInReturn();
    bool IsTooLong() const { return isTooLong_; }

    /// Makes this line, where a record begins, the next one again.
    void Again();
    /// Makes what follows the first size bytes of this line, where a record begins, the next line,
    /// with the same number.
    void KeepRest(std::size_t size);
    /// The bytes of the record so far. A caller of Continue must stop at kMost.
    std::size_t RecordBytes() const { return next_ - kept_; }
    /// Makes the second line of the record the next one. The first must not be too long.
    void GoBack();

  private:
    /// The next byte of a kind: where it is, or how far it was looked for in vain.
    struct Mark {
        char byte;
        std::size_t at;
    };

    bool Fill();
    std::size_t Find(Mark& mark, std::size_t from) const;
    std::size_t FindEnd(std::size_t from);
    void PassEnd(std::size_t end);
    void PassLineFeed();
    void SkipRestOfLine();
    void LookAgainFrom(std::size_t at);

    Input& input_;
    std::string buffer_;
    Mark lineFeed_{'\n', 0};
    Mark return_{'\r', 0};
    std::size_t kept_ = 0;   // Where the record begins in the buffer; what is before it may go.
    std::size_t second_ = 0; // Where its second line begins.
    std::size_t begin_ = 0;  // Where this line begins.
    std::size_t length_ = 0;
    std::size_t next_ = 0; // Where the next line begins.
    std::size_t number_ = 0;
    std::size_t keptNumber_ = 0;
    bool isRest_ = false;          // The next line is the rest of this one.
    bool isTooLong_ = false;       // The rest is skipped by the next call.
    bool isBehindReturn_ = false;  // An LF that the next line begins with ends this one.
    bool wasBehindReturn_ = false; // The same of the first line of the record.
};

} // namespace CallRecordingUtils

#endif
