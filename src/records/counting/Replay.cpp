// One thread reads, since where a record begins shows only when the one before it has been read.
// The others decide and count what it read, and so does it whenever they have enough to do.

#include "records/counting/Replay.h"

#include <atomic>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>

#include <signal.h>

#include "records/counting/FileDigest.h"

namespace CallRecordingUtils {
namespace {

/// Records of one file that follow each other.
struct Batch {
    static constexpr std::size_t kMost = 256;
    static constexpr std::size_t kMostBytes = std::size_t{1} << 20;

    std::string path;
    RecordPlace first;
    std::size_t count = 0;
    std::size_t bytes = 0;
    std::vector<CallRecord> records; // Possibly more than count, so that their memory is reused.

    bool IsFull() const { return count == records.size() || bytes >= kMostBytes; }
    /// Counts the record behind the others in.
    void Add() {
        for (std::string const& value : records[count].values)
            bytes += value.size();
        ++count;
    }
};

/// While it lives, this thread and those that it starts get no interrupt.
class InterruptsBlocked {
  public:
    InterruptsBlocked() {
        sigset_t interrupt;
        sigemptyset(&interrupt);
        sigaddset(&interrupt, SIGINT);
        pthread_sigmask(SIG_BLOCK, &interrupt, &before_);
    }
    ~InterruptsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    InterruptsBlocked(InterruptsBlocked const&) = delete;
    InterruptsBlocked& operator=(InterruptsBlocked const&) = delete;

  private:
    sigset_t before_{};
};

} // namespace

namespace {

/// The digests of files, found by a thread of its own while the files are read.
class Digests {
  public:
    /// paths is borrowed. Nothing is done unless they are wanted.
    Digests(std::vector<std::string> const& paths, bool areWanted) : digests_(paths.size()) {
        if (!areWanted)
            return;
        InterruptsBlocked const blocked;
        thread_ = std::thread([this, &paths] {
            for (std::size_t i = 0; i < paths.size() && !isStopping_; ++i)
                digests_[i] = DigestOfFile(paths[i]);
        });
    }
    ~Digests() {
        isStopping_ = true;
        Finish();
    }
    Digests(Digests const&) = delete;
    Digests& operator=(Digests const&) = delete;

    std::string const& Of(std::size_t index) {
        Finish();
        return digests_[index];
    }

  private:
    void Finish() {
        if (thread_.joinable())
            thread_.join();
    }

    std::vector<std::string> digests_;
    std::atomic<bool> isStopping_{false};
    std::thread thread_;
};

} // namespace

/// The threads, and the batches that wait for them. What the reading thread decides itself is
/// counted by the first counter.
class Replay::Crew {
  public:
    explicit Crew(Replay const& replay) {
        std::size_t const jobs = replay.options_.onCall ? 1 : replay.options_.jobs;
        mostWaiting_ = jobs > 1 ? 2 * jobs : 0;
        RuleSet const* const others = replay.others_ ? &*replay.others_ : nullptr;
        for (std::size_t i = 0; i < std::max<std::size_t>(jobs, 1); ++i)
            counters_.emplace_back(replay.rules_, others, replay.options_);
        InterruptsBlocked const blocked; // They must reach the thread that reads.
        for (std::size_t i = 1; i < counters_.size(); ++i)
            threads_.emplace_back([this, i] { Work(counters_[i]); });
    }
    ~Crew() { Finish(); }
    Crew(Crew const&) = delete;
    Crew& operator=(Crew const&) = delete;

    /// A batch to fill.
    std::unique_ptr<Batch> Empty() {
        std::lock_guard<std::mutex> const lock(mutex_);
        if (spare_.empty())
            return std::make_unique<Batch>();
        std::unique_ptr<Batch> batch = std::move(spare_.back());
        spare_.pop_back();
        return batch;
    }

    /// Has the batch counted, by another thread or this one.
    void Take(std::unique_ptr<Batch> batch) {
        {
            std::lock_guard<std::mutex> const lock(mutex_);
            if (waiting_.size() < mostWaiting_) {
                waiting_.push_back(std::move(batch));
                changed_.notify_one();
                return;
            }
        }
        Count(counters_.front(), std::move(batch));
    }

    /// Waits for all threads. Throws what one of them threw.
    CountedCalls Calls() {
        Finish();
        if (failure_)
            std::rethrow_exception(failure_);
        CountedCalls calls = counters_.front().Calls();
        for (std::size_t i = 1; i < counters_.size(); ++i)
            calls.Add(counters_[i].Calls());
        return calls;
    }

  private:
    void Count(CallCounter& counter, std::unique_ptr<Batch> batch) {
        for (std::size_t i = 0; i < batch->count; ++i)
            counter.Take(batch->records[i], {batch->first.first, batch->first.second + i},
                         batch->path);
        if (batch->bytes >= Batch::kMostBytes)
            return; // Its memory is more than others need.
        std::lock_guard<std::mutex> const lock(mutex_);
        spare_.push_back(std::move(batch));
    }

    std::unique_ptr<Batch> Next() {
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait(lock, [this] { return isFinishing_ || !waiting_.empty(); });
        if (waiting_.empty())
            return nullptr;
        std::unique_ptr<Batch> batch = std::move(waiting_.front());
        waiting_.pop_front();
        return batch;
    }

    void Work(CallCounter& counter) {
        try {
            while (std::unique_ptr<Batch> batch = Next())
                Count(counter, std::move(batch));
        } catch (...) {
            std::lock_guard<std::mutex> const lock(mutex_);
            failure_ = std::current_exception();
        }
    }

    void Finish() {
        {
            std::lock_guard<std::mutex> const lock(mutex_);
            isFinishing_ = true;
        }
        changed_.notify_all();
        for (std::thread& thread : threads_)
            thread.join();
        threads_.clear();
    }

    std::deque<CallCounter> counters_;
    std::vector<std::thread> threads_;
    std::size_t mostWaiting_ = 0;
    std::mutex mutex_; // Guards what follows.
    std::condition_variable changed_;
    std::deque<std::unique_ptr<Batch>> waiting_;
    std::vector<std::unique_ptr<Batch>> spare_;
    std::exception_ptr failure_;
    bool isFinishing_ = false;
};

Replay::Replay(RulesOverTime const& rules, RuleList const* others, Options options)
    : rules_(rules), options_(std::move(options)) {
    if (others != nullptr)
        others_.emplace(*others);
}

CountedCalls Replay::Run(std::vector<std::string> const& paths) {
    Crew crew(*this);
    Digests digests(paths, options_.withDigests);
    std::size_t read = 0;
    while (read < paths.size() && !MustStop()) {
        ReadFile(paths[read], read, crew);
        ++read;
    }
    CountedCalls calls = crew.Calls();
    calls.apart.files.resize(read);
    for (std::size_t i = 0; i < read; ++i) {
        calls.apart.files[i].path = paths[i];
        calls.apart.files[i].reading = readings_[i];
        if (options_.withDigests && !MustStop())
            calls.apart.files[i].digest = digests.Of(i);
    }
    calls.apart.isInterrupted = MustStop();
    return calls;
}

void Replay::ReadFile(std::string const& path, std::size_t index, Crew& crew) {
    CallReader reader(path, options_.format, &seen_, options_.onWait);
    std::uint64_t record = 0;
    for (bool isAtEnd = false; !isAtEnd;) {
        std::unique_ptr<Batch> batch = crew.Empty();
        batch->path = path;
        batch->first = {index, record};
        batch->count = batch->bytes = 0;
        batch->records.resize(options_.onCall ? 1
                                              : Batch::kMost); // Each call as soon as it is read.
        while (!isAtEnd && !batch->IsFull()) {
            // A read that an interrupt ends early looks like the end of the file, in the middle of
            // a record.
            isAtEnd = !reader.Next(batch->records[batch->count]) || MustStop();
            if (!isAtEnd)
                batch->Add();
        }
        record += batch->count;
        crew.Take(std::move(batch));
        if (options_.onProgress)
            options_.onProgress(bytesBefore_ + reader.File().Taken(), recordsBefore_ + record);
    }
    readings_.push_back(reader.Reading());
    bytesBefore_ += reader.File().Taken();
    recordsBefore_ += record;
}

} // namespace CallRecordingUtils
