// What was recorded, against what should have been.

#ifndef RECORDS_COUNTING_RECONCILIATION_H
#define RECORDS_COUNTING_RECONCILIATION_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <map>
#include <optional>
#include <tuple>

#include "records/counting/Tally.h"
#include "records/counting/Timeline.h"

namespace CallRecordingUtils {

/// By Reconciliation::Outcome.
inline constexpr std::array<char const*, 6> kOutcomeNames{
    "recorded", "not_recorded", "missing", "unexpected", "unknown", "undecided"};

/// What a service answered when a call was set up.
enum class Answer { Yes, No, Undecided, None };

enum class WasRecorded {
    Yes,
    No,
    Unknown,
    Lost ///< No, though something names a recording, which is not there.
};

class Reconciliation {
  public:
    enum Outcome : std::size_t {
        kRecorded,    ///< As it should.
        kNotRecorded, ///< As it should.
        kMissing,
        kUnexpected,
        kUnknown,   ///< It cannot be told whether it was recorded.
        kUndecided, ///< Neither rules nor an answer tell whether it should have been.
        kOutcomeCount
    };
    /// Whether anything is known of what was recorded or answered.
    bool IsKnown() const {
        return !cases_.empty() || std::any_of(
                                      outcomes_.begin(), outcomes_.end(),
                                      [](ByRule const& rules) { return !rules.empty(); });
    }

    /// Of how many calls it is known both whether they were recorded and whether they should be.
    std::uint64_t Compared() const {
        std::uint64_t calls = 0;
        for (Outcome const outcome : {kRecorded, kNotRecorded, kMissing, kUnexpected})
            calls += Total(outcome).calls;
        return calls;
    }

    /// By the rule that decided the calls.
    using ByRule = std::map<Decision, Tally>;
    /// Whether the rules say that a call is recorded; nothing where they are not known.
    using ByRules = std::optional<bool>;
    /// What was answered, what the rules say, and whether it was recorded.
    using Case = std::tuple<Answer, ByRules, WasRecorded>;

    /// Whether a call should have been recorded: as it was answered or, where there is no such
    /// answer, as the rules say.
    static std::optional<bool> Should(Answer answer, ByRules byRules) {
        return answer == Answer::Yes || answer == Answer::No ? answer == Answer::Yes : byRules;
    }

    static Outcome OutcomeOf(std::optional<bool> should, WasRecorded was) {
        if (was == WasRecorded::Unknown)
            return kUnknown;
        if (!should)
            return kUndecided;
        bool const isThere = was == WasRecorded::Yes;
        return *should == isThere ? (isThere ? kRecorded : kNotRecorded)
                                  : (isThere ? kUnexpected : kMissing);
    }

    /// The tallies for a call.
    Tally& TallyOf(Outcome outcome, Decision decision) { return outcomes_[outcome][decision]; }
    Tally& TallyOf(Case const& which) { return cases_[which]; }

    /// Of calls that were not recorded: those with the name of a recording that is not there.
    Tally lost;

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
        lost.Add(other.lost);
    }

    template <typename Visit>
    void ForEachTally(Visit visit) {
        for (ByRule& rules : outcomes_)
            for (auto& entry : rules)
                visit(entry.second);
        for (auto& entry : cases_)
            visit(entry.second);
        visit(lost);
    }

  private:
    std::array<ByRule, kOutcomeCount> outcomes_;
    std::map<Case, Tally> cases_;
};

} // namespace CallRecordingUtils

#endif
