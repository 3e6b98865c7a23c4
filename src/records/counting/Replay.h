// Reads the calls of call files and has them decided and counted, on several threads.

#ifndef RECORDS_COUNTING_REPLAY_H
#define RECORDS_COUNTING_REPLAY_H

#include <csignal>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "records/counting/CallCounter.h"
#include "records/reading/CallReader.h"

namespace CallRecordingUtils {

class Replay {
  public:
    struct Options : CallCounter::Options {
        CallFormat format;
        /// Called before more of a file is read, which may take as long as it likes.
        std::function<void()> onWait;
        /// Called now and then with the bytes and the records of all files that have been read.
        std::function<void(std::uint64_t bytes, std::uint64_t records)> onProgress;
        /// The replay ends once this is not 0.
        volatile std::sig_atomic_t const* stop = nullptr;
        /// Threads, this one included. With onCall, which sees the calls one by one, only this one.
        std::size_t jobs = 1;
        /// Whether the report shall have the digests of the files.
        bool withDigests = false;
    };

    /// rules is borrowed; others are the rules to compare with, or null.
    Replay(RulesOverTime const& rules, RuleList const* others, Options options);

    /// Decides the calls of the files at paths, one file after the other. Throws an Error.
    CountedCalls Run(std::vector<std::string> const& paths);

  private:
    class Crew;

    bool MustStop() const { return options_.stop != nullptr && *options_.stop != 0; }
    void ReadFile(std::string const& path, std::size_t index, Crew& crew);

    RulesOverTime const& rules_;
    std::optional<RuleSet> others_;
    Options options_;
    std::uint64_t bytesBefore_ = 0; // Of the files that are done.
    std::uint64_t recordsBefore_ = 0;
    SeenValues seen_;
    std::vector<CallReading> readings_; // How each file was read.
};

} // namespace CallRecordingUtils

#endif
