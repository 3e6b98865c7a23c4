// Reads a file through what unpacks it and what turns it into UTF-8.

#include "text/Input.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <stdexcept>

#include <fcntl.h>
#include <iconv.h>
#include <sys/stat.h>
#include <unistd.h>

#include "common/Error.h"

namespace CallRecordingUtils {

/// Turns UTF-16 into UTF-8, also where a block ends within a character.
class Input::Utf16 {
  public:
    explicit Utf16(bool isBigEndian)
        : converter_(iconv_open("UTF-8", isBigEndian ? "UTF-16BE" : "UTF-16LE")) {
        if (converter_ == iconv_t(-1))
            throw std::runtime_error("UTF-16, which this system cannot read");
    }
    ~Utf16() { iconv_close(converter_); }
    Utf16(Utf16 const&) = delete;
    Utf16& operator=(Utf16 const&) = delete;

    void Add(char const* bytes, std::size_t size) { left_.append(bytes, size); }
    bool IsEmpty() const { return left_.empty(); }

    /// Puts what there is to `to`. A character that is not whole is kept.
    std::size_t Convert(char* to, std::size_t size) {
        char* from = left_.data();
        std::size_t count = left_.size();
        std::size_t room = size;
        bool const isWrong = iconv(converter_, &from, &count, &to, &room) == std::size_t(-1) &&
                             errno != EINVAL && errno != E2BIG;
        left_.erase(0, left_.size() - count);
        if (isWrong && room == size)
            throw std::runtime_error("it begins as UTF-16, but is not");
        return size - room;
    }

  private:
    iconv_t converter_;
    std::string left_;
};

Input::Input(std::string const& path)
    : file_(path == "-" ? dup(STDIN_FILENO) : open(path.c_str(), O_RDONLY | O_CLOEXEC)),
      buffer_(std::size_t{128} * 1024) {
    struct stat status {};
    if (file_ < 0 || fstat(file_, &status) != 0 || S_ISDIR(status.st_mode)) {
        std::string const reason = std::strerror(file_ < 0 ? errno : EISDIR);
        if (file_ >= 0)
            close(file_);
        throw Error(Error::Kind::Unreadable, path + ": cannot be read: " + reason);
    }
    read_.data = buffer_.data();
    size_ = S_ISREG(status.st_mode) ? static_cast<std::uint64_t>(status.st_size) : 0;
}

Input::~Input() {
    close(file_);
}

std::size_t Input::ReadFile(char* to, std::size_t size) {
    if (wait_)
        wait_();
    ssize_t const count = read(file_, to, size);
    if (count < 0 && errno != EINTR)
        throw std::runtime_error(std::strerror(errno));
    isStopped_ = count < 0;
    taken_ += static_cast<std::uint64_t>(std::max<ssize_t>(count, 0));
    return static_cast<std::size_t>(std::max<ssize_t>(count, 0));
}

/// Reads more behind what is left in the buffer. Returns false at the end.
bool Input::Fill() {
    std::memmove(buffer_.data(), read_.data, read_.size);
    std::size_t const count = ReadFile(buffer_.data() + read_.size, buffer_.size() - read_.size);
    read_ = {buffer_.data(), read_.size + count};
    return count > 0;
}

/// Finds out how what comes next is packed. Between members there may be zeros.
void Input::BeginMember() {
    for (;;) {
        while (isBehindMember_ && read_.size > 0 && *read_.data == '\0')
            read_ = {read_.data + 1, read_.size - 1};
        std::string_view const bytes(read_.data, read_.size);
        Beginning const beginning = LookAtBeginning(bytes);
        if (beginning == Beginning::Packed)
            unpacker_ = MakeUnpacker(bytes);
        if (beginning != Beginning::TooShort || !Fill())
            break;
    }
    isAtMember_ = isStopped_;
}

std::size_t Input::ReadUnpacked(char* to, std::size_t size) {
    Room room{to, size};
    while (room.size == size) {
        if (isAtMember_)
            BeginMember();
        if (isStopped_)
            return 0;
        if (unpacker_ == nullptr) {
            if (read_.size == 0)
                return ReadFile(to, size);
            std::size_t const count = std::min(size, read_.size);
            std::memcpy(to, read_.data, count);
            read_ = {read_.data + count, read_.size - count};
            return count;
        }
        bool const isEnd = read_.size == 0 && !Fill();
        if (isStopped_)
            return 0;
        if (unpacker_->Unpack(read_, room)) {
            unpacker_.reset();
            isAtMember_ = isBehindMember_ = true;
        } else if (isEnd && room.size == size) {
            throw std::runtime_error("compressed data: unexpected end of file");
        }
    }
    return size - room.size;
}

/// Only UTF-16 has a first byte of 0xFF or 0xFE.
void Input::LookForUtf16() {
    char bytes[2];
    auto const isMark = [this] { return first_[0] == '\xFF' || first_[0] == '\xFE'; };
    while (first_.empty() || (first_.size() == 1 && isMark())) {
        std::size_t const count = ReadUnpacked(bytes, sizeof bytes - first_.size());
        if (count == 0)
            break;
        first_.append(bytes, count);
    }
    if (isStopped_)
        return;
    isLookedAt_ = true;
    if (first_ == "\xFF\xFE" || first_ == "\xFE\xFF") {
        utf16_ = std::make_unique<Utf16>(first_[0] == '\xFE');
        first_.clear();
    }
}

std::size_t Input::Read(char* to, std::size_t size) {
    if (!isLookedAt_)
        LookForUtf16();
    if (isStopped_)
        return isStopped_ = false, 0;
    if (!first_.empty()) {
        std::size_t const count = std::min(size, first_.size());
        std::memcpy(to, first_.data(), count);
        first_.erase(0, count);
        return count;
    }
    std::size_t count = 0;
    if (utf16_ == nullptr)
        count = ReadUnpacked(to, size);
    while (utf16_ != nullptr && (count = utf16_->Convert(to, size)) == 0) {
        std::size_t const more = ReadUnpacked(to, size);
        if (more == 0 && !utf16_->IsEmpty() && !isStopped_)
            throw std::runtime_error("it ends within a character of UTF-16");
        if (more == 0)
            break;
        utf16_->Add(to, more);
    }
    isStopped_ = false;
    return count;
}

} // namespace CallRecordingUtils
