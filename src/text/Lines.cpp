// Splits the bytes of a call file into lines.

#include "text/Lines.h"

#include <algorithm>

namespace CallRecordingUtils {

/// Reads more behind what the buffer holds. What lies before the record is dropped.
bool Lines::Fill() {
    constexpr std::size_t kBlock = std::size_t{64} * 1024;
    buffer_.erase(0, kept_);
    begin_ -= kept_;
    next_ -= kept_;
    second_ -= kept_;
    for (Mark* const mark : {&lineFeed_, &return_})
        mark->at -= std::min(mark->at, kept_);
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

/// Each byte is looked at once for each mark, however far the two are apart.
std::size_t Lines::Find(Mark& mark, std::size_t from) const {
    mark.at = std::max(mark.at, from);
    if (mark.at < buffer_.size() && buffer_[mark.at] != mark.byte)
        mark.at = std::min(buffer_.find(mark.byte, mark.at), buffer_.size());
    return mark.at < buffer_.size() ? mark.at : std::string::npos;
}

std::size_t Lines::FindEnd(std::size_t from) {
    return std::min(Find(lineFeed_, from), Find(return_, from));
}

/// Goes to the line behind the line end at end. Whether an LF follows a CR may not be known yet.
void Lines::PassEnd(std::size_t end) {
    next_ = end + 1;
    isBehindReturn_ = buffer_[end] == '\r';
    if (next_ < buffer_.size())
        PassLineFeed();
}

void Lines::PassLineFeed() {
    if (!isBehindReturn_ || (next_ == buffer_.size() && !Fill()))
        return;
    isBehindReturn_ = false;
    next_ += buffer_[next_] == '\n' ? 1 : 0;
}

bool Lines::EndsInReturn() {
    PassLineFeed();
    return next_ > begin_ && buffer_[next_ - 1] == '\r';
}

void Lines::SkipRestOfLine() {
    for (;;) {
        std::size_t const end = FindEnd(next_);
        if (end != std::string::npos)
            return PassEnd(end);
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
    wasBehindReturn_ = isBehindReturn_;
    keptNumber_ = number_;
    return isThere;
}

bool Lines::Continue() {
    isTooLong_ = false;
    PassLineFeed();
    begin_ = next_;
    std::size_t end = FindEnd(begin_);
    while (end == std::string::npos && buffer_.size() - begin_ <= kMost) {
        if (!Fill())
            break;
        end = FindEnd(begin_);
    }
    length_ = (end == std::string::npos ? buffer_.size() : end) - begin_;
    if (end == std::string::npos && length_ == 0)
        return false;
    isTooLong_ = length_ > kMost;
    if (end == std::string::npos || isTooLong_)
        next_ = begin_ + length_;
    else
        PassEnd(end);
    number_ += isRest_ ? 0 : 1;
    isRest_ = false;
    constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
    if (number_ == 1 && Text().substr(0, kUtf8Mark.size()) == kUtf8Mark) {
        begin_ += kUtf8Mark.size();
        length_ -= kUtf8Mark.size();
    }
    return true;
}

void Lines::LookAgainFrom(std::size_t at) {
    next_ = lineFeed_.at = return_.at = at;
    isTooLong_ = false;
}

void Lines::Again() {
    LookAgainFrom(begin_);
    isBehindReturn_ = false;
    --number_;
}

void Lines::KeepRest(std::size_t size) {
    LookAgainFrom(begin_ + size);
    second_ = next_;
    length_ = size;
    isRest_ = true;
    isBehindReturn_ = wasBehindReturn_ = false;
}

void Lines::GoBack() {
    LookAgainFrom(second_);
    isBehindReturn_ = wasBehindReturn_;
    begin_ = second_;
    length_ = 0;
    number_ = keptNumber_;
}

} // namespace CallRecordingUtils
