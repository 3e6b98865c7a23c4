// The file of --answers: each answer as a JSON line.

#ifndef CALLRECORDINGD_ANSWERFILE_H
#define CALLRECORDINGD_ANSWERFILE_H

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace callrecordingd {

/// Appends lines on a thread of its own, so that a slow or full disk holds up no answer. A file
/// that is renamed is opened anew under its name. What cannot be written is lost, counted, and said
/// once for each time that writing begins to fail; a line is written whole or not at all.
class AnswerFile {
  public:
    AnswerFile(std::string path, std::function<void(std::string const&)> notice);
    /// Writes what is left.
    ~AnswerFile();
    AnswerFile(AnswerFile const&) = delete;
    AnswerFile& operator=(AnswerFile const&) = delete;

    /// line has no line end.
    void Append(std::string const& line);

    std::uint64_t LostLines() const { return lost_; }

  private:
    void WriteUntilStopped();
    void Write(std::string const& lines);
    void OpenIfRenamed();
    bool WriteWhole(std::string const& lines);
    void Fail(std::string const& reason, std::string const& lines);

    std::string const path_;
    std::function<void(std::string const&)> const notice_;
    std::atomic<std::uint64_t> lost_{0};
    int file_ = -1;          // Of the writing thread.
    bool isFailing_ = false; // Likewise.
    std::mutex mutex_;       // Guards what follows.
    std::condition_variable changed_;
    std::string waiting_;
    bool isStopping_ = false;
    std::thread writer_;
};

} // namespace callrecordingd

#endif
