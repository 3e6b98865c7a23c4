// Appends answers to a file.

#include "AnswerFile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fmt/format.h>

namespace callrecordingd {
namespace {

constexpr std::size_t kMostWaiting = std::size_t{16} << 20; // Bytes; some 50,000 answers.

std::uint64_t LinesIn(std::string const& text) {
    return static_cast<std::uint64_t>(std::count(text.begin(), text.end(), '\n'));
}

} // namespace

AnswerFile::AnswerFile(std::string path, std::function<void(std::string const&)> notice)
    : path_(std::move(path)), notice_(std::move(notice)), writer_([this] { WriteUntilStopped(); }) {
}

AnswerFile::~AnswerFile() {
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        isStopping_ = true;
    }
    changed_.notify_one();
    writer_.join();
    if (file_ >= 0)
        close(file_);
}

void AnswerFile::Append(std::string const& line) {
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        if (waiting_.size() + line.size() > kMostWaiting) {
            ++lost_;
            return;
        }
        waiting_ += line;
        waiting_ += '\n';
    }
    changed_.notify_one();
}

void AnswerFile::WriteUntilStopped() {
    std::unique_lock<std::mutex> lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return isStopping_ || !waiting_.empty(); });
        if (waiting_.empty())
            return;
        std::string lines;
        lines.swap(waiting_);
        lock.unlock();
        Write(lines);
        lock.lock();
    }
}

void AnswerFile::Write(std::string const& lines) {
    OpenIfRenamed();
    if (file_ < 0)
        return Fail(std::strerror(errno), lines);
    if (!WriteWhole(lines))
        return Fail(std::strerror(errno), lines);
    if (isFailing_)
        notice_(fmt::format("{}: answers are written again", path_));
    isFailing_ = false;
}

void AnswerFile::OpenIfRenamed() {
    struct stat ours {};
    struct stat named {};
    bool const isOurs = file_ >= 0 && fstat(file_, &ours) == 0 &&
                        stat(path_.c_str(), &named) == 0 && ours.st_dev == named.st_dev &&
                        ours.st_ino == named.st_ino;
    if (isOurs)
        return;
    if (file_ >= 0)
        close(file_);
    constexpr mode_t kMode = 0640;
    file_ = open(path_.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK,
                 kMode);
}

/// On failure the file is as it was, and errno says why.
bool AnswerFile::WriteWhole(std::string const& lines) {
    off_t const before = lseek(file_, 0, SEEK_END);
    std::size_t done = 0;
    while (done < lines.size()) {
        ssize_t const count = write(file_, lines.data() + done, lines.size() - done);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0) {
            int const error = count < 0 ? errno : ENOSPC;
            if (before >= 0 && ftruncate(file_, before) != 0 && done > 0)
                notice_(fmt::format("{}: ends in the middle of a line", path_));
            errno = error;
            return false;
        }
        done += static_cast<std::size_t>(count);
    }
    return true;
}

void AnswerFile::Fail(std::string const& reason, std::string const& lines) {
    lost_ += LinesIn(lines);
    if (!isFailing_)
        notice_(fmt::format("{}: answers cannot be written, and are lost: {}", path_, reason));
    isFailing_ = true;
}

} // namespace callrecordingd
