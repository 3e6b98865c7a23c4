// The rules by which the service decides: loaded, kept when a new file is broken, and read again
// when the file has become another one.

#ifndef CALLRECORDINGD_LIVERULES_H
#define CALLRECORDINGD_LIVERULES_H

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "loading/LoadedRules.h"

namespace callrecordingd {

/// Rules as they were loaded, with what answers need of them. It never changes.
struct Snapshot {
    std::unique_ptr<CallRecordingUtils::LoadedRules const> loaded;
    std::string state;              ///< The eight digits that callrecordingctl prints.
    std::vector<std::string> texts; ///< Each rule as a JSON object, by its place.
};

/// One attempt to load the rules.
struct LoadAttempt {
    std::int64_t time = 0; ///< In seconds since 1970.
    bool hasFailed = false;
    std::string notice; ///< What it said.
};

/// How loading went since the start. A file that is read again and is the same as before does not
/// count as another load.
struct LoadHistory {
    std::uint64_t loads = 0; ///< Failed ones included.
    std::uint64_t failedLoads = 0;
    std::int64_t lastTime = 0;      ///< Of the last load that succeeded, in seconds since 1970.
    std::string lastFailure;        ///< Why the last load failed; empty when it did not.
    std::deque<LoadAttempt> latest; ///< The last few, the newest first.
};

/// Any number of threads may ask for the rules while they are loaded anew.
class LiveRules {
  public:
    /// The rules of the file at path. notice gets a sentence about each load.
    LiveRules(std::string path, std::function<void(std::string const&)> notice);
    ~LiveRules();
    LiveRules(LiveRules const&) = delete;
    LiveRules& operator=(LiveRules const&) = delete;

    std::string const& Path() const { return path_; }

    /// The rules as they are now; null until a file was read.
    std::shared_ptr<Snapshot const> Now() const { return std::atomic_load(&snapshot_); }

    LoadHistory History() const;

    /// Reads the file if it is another one than the last time.
    void LoadIfChanged();

    /// Reads the file even if it looks the same.
    void Load();

    /// From now on a thread watches the directory of the file, and reads the file when it changes.
    /// The path is looked at once a second too: where its directory is a link to another one, a
    /// change of that link shows in no event.
    void Watch();

  private:
    void LoadNow();
    void Succeed(std::unique_ptr<CallRecordingUtils::LoadedRules const> loaded);
    void Fail(std::string const& failure);
    void Remember(bool hasFailed, std::string const& notice, std::string const& failure);
    void WatchUntilStopped();

    std::string const path_;
    std::function<void(std::string const&)> const notice_;
    std::shared_ptr<Snapshot const> snapshot_;
    std::mutex loading_; // Held while the file is read, which may take long. Guards what follows.
    CallRecordingUtils::FileStamp stamp_;
    bool isStampSettled_ = false;   // A later change of the file would show in its stamp.
    mutable std::mutex forHistory_; // Guards what follows.
    LoadHistory history_;
    int stopPipe_[2] = {-1, -1};
    std::thread watcher_;
};

} // namespace callrecordingd

#endif
