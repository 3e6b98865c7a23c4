// What was recorded, against what should have been.

#ifndef RECORDS_COUNTING_RECONCILIATION_H
#define RECORDS_COUNTING_RECONCILIATION_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <map>
#include <tuple>

#include "records/counting/Tally.h"
#include "records/counting/Timeline.h"

namespace CallRecordingUtils {

/// By Reconciliation::Outcome.
inline constexpr std::array<char const*, 5> kOutcomeNames{"recorded", "not_recorded", "missing",
                                                          "unexpected", "unknown"};

/// What a service answered when a call was set up.
enum class Answer { Yes, No, Undecided, None };

enum class WasRecorded { Yes, No, Unknown };

class Reconciliation {
  public:
    enum Outcome : std::size_t {
        kRecorded,    ///< As it should.
        kNotRecorded, ///< As it should.
        kMissing,
        kUnexpected,
        kUnknown, ///< It cannot be told whether it was recorded.
        kOutcomeCount
    };
    /// Whether anything is known of what was recorded or answered.
    bool IsKnown() const {
        return !cases_.empty() || std::any_of(
                                      outcomes_.begin(), outcomes_.end(),
                                      [](ByRule const& rules) { return !rules.empty(); });
    }

    /// Whether of any call it is known if it was recorded.
    bool TellsOfAny() const {
        return std::any_of(
            outcomes_.begin(), outcomes_.begin() + kUnknown,
            [](ByRule const& rules) { return !rules.empty(); });
    }

    /// By the rule that decided the calls: kNoRule where none did.
    using ByRule = std::map<Decision, Tally>;
    /// What was answered, whether the rules say that it is recorded, and whether it was.
    using Case = std::tuple<Answer, bool, WasRecorded>;

    /// Whether a call should have been recorded: as it was answered or, where there is no such
    /// answer, as the rules say.
    static bool Should(Answer answer, bool byRules) {
        return answer == Answer::Yes || (answer != Answer::No && byRules);
    }

    static Outcome OutcomeOf(bool should, WasRecorded was) {
        if (was == WasRecorded::Unknown)
            return kUnknown;
        bool const isThere = was == WasRecorded::Yes;
        return should == isThere ? (should ? kRecorded : kNotRecorded)
                                 : (should ? kMissing : kUnexpected);
    }

    /// The tallies for a call.
    Tally& TallyOf(Outcome outcome, Decision decision) { return outcomes_[outcome][decision]; }
    Tally& TallyOf(Case const& which) { return cases_[which]; }

    ByRule const& Of(Outcome outcome) const { return outcomes_[outcome]; }
    Tally Total(Outcome outcome) const {
        Tally total;
        for (auto const& entry : outcomes_[outcome])
            total.Add(entry.second);
        return total;
    }
    /// Empty where no answers are known.
    std::map<Case, Tally> const& Cases() const { return cases_; }

    /// Adds what other counted, with its decisions under other names.
    template <typename NewName>
    void Add(Reconciliation const& other, NewName newName) {
        for (std::size_t outcome = 0; outcome < kOutcomeCount; ++outcome)
            for (auto const& [decision, tally] : other.outcomes_[outcome])
                outcomes_[outcome][newName(decision)].Add(tally);
        for (auto const& [which, tally] : other.cases_)
            cases_[which].Add(tally);
    }

    template <typename Visit>
    void ForEachTally(Visit visit) {
        for (ByRule& rules : outcomes_)
            for (auto& entry : rules)
                visit(entry.second);
        for (auto& entry : cases_)
            visit(entry.second);
    }

  private:
    std::array<ByRule, kOutcomeCount> outcomes_;
    std::map<Case, Tally> cases_;
};

} // namespace CallRecordingUtils

#endif
