// Decides the calls of call files by a list of rules, and counts.

#ifndef RECORDS_COUNTING_REPLAY_H
#define RECORDS_COUNTING_REPLAY_H

#include <array>
#include <csignal>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "calls/AskedSide.h"
#include "calls/RuleSet.h"
#include "model/RuleList.h"
#include "records/counting/LeadingDigits.h"
#include "records/counting/Tally.h"
#include "records/counting/Timeline.h"
#include "records/reading/CallReader.h"

namespace CallRecordingUtils {

/// What was counted. Its size grows with the number of rules, not with the number of calls.
struct ReplayReport {
    static constexpr std::size_t kMostProblems = 10;
    static constexpr std::size_t kMostDifferences = 1000;

    struct File {
        std::string path;
        std::uint64_t calls = 0;
        std::uint64_t unreadable = 0;
    };
    struct Problem {
        std::string file;
        std::size_t line;
        std::string reason;
    };

    std::vector<File> files;
    Tally all;
    std::vector<Tally> byRule;    // By the index of the rule.
    Tally noRule;                 // Calls that no rule takes,
    Tally forbidden;              // and calls that a rule takes which forbids recording.
    LeadingDigits noRuleByDigits; // Of the number called.
    Timeline timeline;
    /// How the calls were asked about.
    std::uint64_t asParties = 0, asTyped = 0, asBoth = 0;
    std::array<std::uint64_t, kCleaningCount> cleaned{};
    std::uint64_t unreadable = 0;
    std::vector<Problem> problems; // The first unreadable lines, kMostProblems of them.
    std::uint64_t withoutTime = 0; // Calls whose time is not in a known format,
    std::optional<Problem> firstWithoutTime;

    Tally different; // Calls that the other rules decide differently.
    std::map<std::pair<Decision, Decision>, Tally> differences; // By the rule here and there.
    Tally moreDifferences; // What goes beyond kMostDifferences pairs.

    bool isInterrupted = false;

    std::uint64_t Recorded() const { return all.calls - noRule.calls - forbidden.calls; }
};

/// A call with its decision.
struct DecidedCall {
    std::string const& file;
    CallRecord const& record;
    AskedSide const &from, &to;
    Decision decision;
    std::optional<Decision> other; // By the rules to compare with, if any.
};

/// Whether calls are recorded in the same way to the same place by both rules, or by neither: null
/// is no rule.
bool HaveSameOutcome(Rule const* left, Rule const* right);

class Replay {
  public:
    struct Options {
        CallFormat format;
        /// Reads the value of a column with call types.
        std::function<std::optional<CallType>(std::string const&)> parseCallType;
        /// Called for each call.
        std::function<void(DecidedCall const&)> onCall;
        /// Called now and then with the file that is being read and the number of calls so far.
        std::function<void(Input const&, std::uint64_t calls)> onProgress;
        /// The replay ends once this is not 0.
        volatile std::sig_atomic_t const* stop = nullptr;
    };

    /// others are the rules to compare with, or null.
    Replay(RuleList const& rules, RuleList const* others, Options options);

    /// Decides the calls of the file at path. Throws an Error.
    void Run(std::string const& path);

    ReplayReport const& Report() const { return report_; }

  private:
    bool MustStop() const { return options_.stop != nullptr && *options_.stop != 0; }
    std::optional<AskedSide> ReadSide(CallRecord& record, Column address, Column type) const;
    void CountQuestion(AskedSide const& from, AskedSide const& to);
    void Take(CallRecord& record, ReplayReport::File& file);
    void AddProblem(CallRecord const& record, ReplayReport::File& file);
    std::optional<CallTime> ReadTime(CallRecord const& record, std::string const& file);
    void Count(DecidedCall const& call);

    RuleSet const rules_;
    std::optional<RuleSet> others_;
    Options options_;
    ReplayReport report_;
};

} // namespace CallRecordingUtils

#endif
