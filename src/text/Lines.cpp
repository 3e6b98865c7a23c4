// Splits the bytes of a call file into lines.

#include "text/Lines.h"

namespace CallRecordingUtils {

/// Reads more behind what the buffer holds. What lies before the record is dropped.
bool Lines::Fill() {
    constexpr std::size_t kBlock = std::size_t{64} * 1024;
    buffer_.erase(0, kept_);
    begin_ -= kept_;
    next_ -= kept_;
    second_ -= kept_;
    kept_ = 0;
    std::size_t const size = buffer_.size();
    buffer_.resize(size + kBlock);
    std::size_t count = 0;
    try {
        count = input_.Read(buffer_.data() + size, kBlock);
    } catch (...) {
        buffer_.resize(size);
        throw;
    }
    buffer_.resize(size + count);
    return count > 0;
}

void Lines::SkipRestOfLine() {
    for (;;) {
        std::size_t const end = buffer_.find('\n', next_);
        if (end != std::string::npos) {
            next_ = end + 1;
            return;
        }
        kept_ = begin_ = next_ = second_ = buffer_.size();
        if (!Fill())
            return;
    }
}

bool Lines::Next() {
    if (isTooLong_)
        SkipRestOfLine();
    kept_ = next_; // What came before is not needed while the line is looked for.
    bool const isThere = Continue();
    second_ = next_;
    keptNumber_ = number_;
    return isThere;
}

bool Lines::Continue() {
    isTooLong_ = false;
    begin_ = next_;
    std::size_t end = buffer_.find('\n', begin_);
    while (end == std::string::npos && buffer_.size() - begin_ <= kMost) {
        std::size_t const seen = buffer_.size() - begin_;
        if (!Fill())
            break;
        end = buffer_.find('\n', begin_ + seen);
    }
    length_ = (end == std::string::npos ? buffer_.size() : end) - begin_;
    if (end == std::string::npos && length_ == 0)
        return false;
    isTooLong_ = length_ > kMost;
    next_ = end == std::string::npos || isTooLong_ ? begin_ + length_ : end + 1;
    ++number_;
    if (!isTooLong_ && length_ > 0 && buffer_[begin_ + length_ - 1] == '\r')
        --length_;
    constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
    if (number_ == 1 && Text().substr(0, kUtf8Mark.size()) == kUtf8Mark) {
        begin_ += kUtf8Mark.size();
        length_ -= kUtf8Mark.size();
    }
    return true;
}

void Lines::Again() {
    next_ = begin_;
    --number_;
    isTooLong_ = false;
}

void Lines::GoBack() {
    begin_ = next_ = second_;
    length_ = 0;
    number_ = keptNumber_;
    isTooLong_ = false;
}

} // namespace CallRecordingUtils
