// What a replay counted.

#ifndef RECORDS_COUNTING_REPLAYREPORT_H
#define RECORDS_COUNTING_REPLAYREPORT_H

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "calls/Cleanings.h"
#include "records/counting/LeadingDigits.h"
#include "records/counting/Reconciliation.h"
#include "records/counting/Tally.h"
#include "records/counting/Timeline.h"
#include "records/reading/CallFormat.h"

namespace CallRecordingUtils {

/// Its size grows with the number of rules, not with the number of calls. What it says does not
/// depend on the order in which calls were counted, nor on how they were shared out and added.
struct ReplayReport {
    static constexpr std::size_t kMostProblems = 10;
    static constexpr std::size_t kMostDifferences = 1000;

    struct File {
        std::string path;
        std::uint64_t calls = 0;
        std::uint64_t unreadable = 0;
        CallReading reading;
        std::string digest; // Empty: not asked for, or not known.
    };
    struct Problem {
        std::string file;
        std::size_t line;
        std::string reason;
        RecordPlace place;
    };
    using Differences = std::map<std::pair<Decision, Decision>, Tally>;

    std::vector<File> files;
    Tally all;
    /// When calls were: the instants where they are known, else what a clock showed. From these
    /// comes the period of a state, which keeps it in their stead.
    Extent instants, shownTimes;
    std::vector<Tally> byRule;    // By the index of the rule.
    Tally noRule;                 // Calls that no rule takes,
    Tally forbidden;              // and calls that a rule takes which forbids recording.
    LeadingDigits noRuleByDigits; // Of the number called.
    /// Calls that were not decided, since the rules of their time are not known: it is before all
    /// that is known, there is no time, or these rules are not kept any more.
    Tally withoutRulesBefore, withoutRulesOfNoTime, withoutRulesNotKept;
    Reconciliation reconciliation;
    Timeline timeline;
    /// How the calls were asked about.
    std::uint64_t asParties = 0, asTyped = 0, asBoth = 0;
    std::array<std::uint64_t, kCleaningCount> cleaned{};
    std::uint64_t unreadable = 0;
    std::vector<Problem> problems; // The first unreadable lines, kMostProblems of them.
    std::uint64_t withoutTime = 0; // Calls whose time is not in a known format,
    std::optional<Problem> firstWithoutTime;

    Tally different;         // Calls that the other rules decide differently.
    Differences differences; // By the rule here and there: the first kMostDifferences such pairs
    Tally moreDifferences;   // in the order of the rules, and the calls of all further pairs.

    bool isInterrupted = false;

    std::uint64_t WithoutRules() const {
        return withoutRulesBefore.calls + withoutRulesOfNoTime.calls + withoutRulesNotKept.calls;
    }
    std::uint64_t Recorded() const {
        return all.calls - noRule.calls - forbidden.calls - WithoutRules();
    }

    /// Notes what could not be read; what does not belong to the first ones is forgotten.
    void AddProblem(Problem problem);
    /// The tally for calls that these rules decide differently.
    Tally& DifferenceOf(std::pair<Decision, Decision> const& rules);

    /// Adds other, which counted other calls of the same files. places says where each of its rules
    /// is here; null: at the same place.
    void Add(ReplayReport const& other, std::vector<std::size_t> const* places = nullptr);
    /// Makes the files of this report those behind the first ones of another report.
    void MoveBehind(std::size_t files);

  private:
    void AddFiles(ReplayReport const& other);
    void KeepFirstDifferences();
};

} // namespace CallRecordingUtils

#endif
