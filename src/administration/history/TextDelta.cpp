// A delta is a sequence of steps: "copy these bytes of the base" or "insert these bytes".

#include "administration/history/TextDelta.h"

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

namespace CallRecordingUtils {
namespace {

/// Seven bits a byte, the low ones first; all but the last byte have the high bit.
void AppendNumber(std::string& to, std::uint64_t number) {
    for (; number >= 0x80; number >>= 7)
        to += static_cast<char>(number | 0x80);
    to += static_cast<char>(number);
}

std::optional<std::uint64_t> TakeNumber(std::string_view& from) {
    std::uint64_t number = 0;
    for (unsigned shift = 0; shift < 63 && !from.empty(); shift += 7) {
        auto const byte = static_cast<unsigned char>(from.front());
        from.remove_prefix(1);
        number |= static_cast<std::uint64_t>(byte & 0x7F) << shift;
        if (byte < 0x80)
            return number;
    }
    return std::nullopt;
}

/// Writes steps. A number twice the length begins each; its lowest bit says that the bytes are
/// copied, and then follows where from, relative to the end of the copy before, so that a file in
/// which everything has moved by the same distance repeats the same step.
class DeltaWriter {
  public:
    void Copy(std::size_t begin, std::size_t size) {
        if (size == 0)
            return;
        if (copied_ > 0 && begin == copyBegin_ + copied_) {
            copied_ += size;
            return;
        }
        Flush();
        copyBegin_ = begin;
        copied_ = size;
    }

    void Insert(std::string_view text) {
        FlushCopy();
        inserted_ += text;
    }

    std::string Take() {
        Flush();
        return std::move(delta_);
    }

  private:
    void FlushCopy() {
        if (copied_ == 0)
            return;
        AppendNumber(delta_, 2 * copied_ + 1);
        bool const isAhead = copyBegin_ >= lastEnd_;
        std::size_t const distance = isAhead ? copyBegin_ - lastEnd_ : lastEnd_ - copyBegin_;
        AppendNumber(delta_, 2 * distance + (isAhead ? 0 : 1));
        lastEnd_ = copyBegin_ + copied_;
        copied_ = 0;
    }

    void Flush() {
        FlushCopy();
        if (!inserted_.empty()) {
            AppendNumber(delta_, 2 * inserted_.size());
            delta_ += std::exchange(inserted_, "");
        }
    }

    std::string delta_;
    std::string inserted_;
    std::size_t copyBegin_ = 0, copied_ = 0; // The copy that is not written yet.
    std::size_t lastEnd_ = 0;                // The end of the last one written.
};

std::string_view TakeLine(std::string_view& text) {
    std::size_t const end = std::min(text.find('\n'), text.size() - 1);
    std::string_view const line = text.substr(0, end + 1);
    text.remove_prefix(line.size());
    return line;
}

/// How many bytes at the beginning of both texts are the same whole lines.
std::size_t CommonLines(std::string_view a, std::string_view b) {
    auto const [end, ignored] = std::mismatch(
        a.begin(), a.begin() + static_cast<std::ptrdiff_t>(std::min(a.size(), b.size())),
        b.begin());
    auto const same = static_cast<std::size_t>(end - a.begin());
    return same == 0 ? 0 : a.substr(0, same).rfind('\n') + 1;
}

/// How many bytes at the end of both are the same.
std::size_t CommonEnd(std::string_view a, std::string_view b) {
    std::size_t same = 0;
    while (same < a.size() && same < b.size() && a[a.size() - same - 1] == b[b.size() - same - 1])
        ++same;
    return same;
}

/// Finds lines of a text. The nearest one at or after a place is preferred, since what follows a
/// copied line in the base mostly follows in the new text as well.
class LineIndex {
  public:
    LineIndex(std::string_view text, std::size_t offset) {
        while (!text.empty()) {
            std::string_view const line = TakeLine(text);
            lines_.emplace_back(line, offset);
            offset += line.size();
        }
        std::sort(lines_.begin(), lines_.end());
    }

    std::optional<std::size_t> Find(std::string_view line, std::size_t near) const {
        auto const found = std::lower_bound(lines_.begin(), lines_.end(), std::pair(line, near));
        if (found != lines_.end() && found->first == line)
            return found->second;
        if (found != lines_.begin() && std::prev(found)->first == line)
            return std::prev(found)->second;
        return std::nullopt;
    }

  private:
    std::vector<std::pair<std::string_view, std::size_t>> lines_; // With their offsets.
};

} // namespace

std::string DeltaBetween(std::string_view base, std::string_view text) {
    std::size_t const start = CommonLines(base, text);
    std::size_t const end = CommonEnd(base.substr(start), text.substr(start));
    LineIndex const index(base.substr(start, base.size() - start - end), start);
    DeltaWriter delta;
    delta.Copy(0, start);
    std::size_t near = start;
    for (std::string_view rest = text.substr(start, text.size() - start - end); !rest.empty();) {
        std::string_view const line = TakeLine(rest);
        if (auto const offset = index.Find(line, near)) {
            delta.Copy(*offset, line.size());
            near = *offset + line.size();
        } else {
            delta.Insert(line);
        }
    }
    delta.Copy(base.size() - end, end);
    return delta.Take();
}

std::optional<std::string> ApplyDelta(std::string_view base, std::string_view delta,
                                      std::size_t size) {
    std::string text;
    std::size_t lastEnd = 0;
    while (!delta.empty()) {
        auto const step = TakeNumber(delta);
        if (!step)
            return std::nullopt;
        std::size_t const count = *step / 2;
        if (count > size - text.size())
            return std::nullopt;
        if (*step % 2 == 0) {
            if (count > delta.size())
                return std::nullopt;
            text += delta.substr(0, count);
            delta.remove_prefix(count);
            continue;
        }
        auto const distance = TakeNumber(delta);
        if (!distance)
            return std::nullopt;
        std::size_t const begin =
            *distance % 2 == 0 ? lastEnd + *distance / 2 : lastEnd - *distance / 2;
        if (begin > base.size() || count > base.size() - begin)
            return std::nullopt;
        text += base.substr(begin, count);
        lastEnd = begin + count;
    }
    if (text.size() != size)
        return std::nullopt;
    return text;
}

} // namespace CallRecordingUtils
