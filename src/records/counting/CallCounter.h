// Decides calls by a list of rules, and counts them.

#ifndef RECORDS_COUNTING_CALLCOUNTER_H
#define RECORDS_COUNTING_CALLCOUNTER_H

#include <functional>
#include <optional>
#include <string>

#include "calls/AskedSide.h"
#include "calls/RuleSet.h"
#include "model/RuleList.h"
#include "records/counting/CountedCalls.h"
#include "records/counting/RulesOverTime.h"
#include "records/reading/CallRecord.h"

namespace CallRecordingUtils {

/// A call with its decision.
struct DecidedCall {
    std::string const& file;
    CallRecord const& record;
    AskedSide const &from, &to;
    Decision decision;
    std::optional<Decision> other; // By the rules to compare with, if any.
};

/// Counts what one thread takes, in the order of the calls.
class CallCounter {
  public:
    struct Options {
        /// Called for each call.
        std::function<void(DecidedCall const&)> onCall;
        /// Called for each line that cannot be read.
        std::function<void(CallRecord const&, std::string const& path)> onUnreadable;
        /// Tells whether a call was recorded; nothing where its file does not say. May be missing,
        /// like the next one; several threads ask.
        std::function<std::optional<WasRecorded>(CallRecord const&)> wasRecorded;
        /// Tells what was answered when the call was set up.
        std::function<Answer(CallRecord const&)> answerTo;
    };

    /// others are the rules to compare with, or null. All are borrowed.
    CallCounter(RulesOverTime const& rules, RuleSet const* others, Options const& options)
        : rules_(rules), others_(others), options_(options) {}

    /// Takes the record at this place, in a file with this path.
    void Take(CallRecord const& record, RecordPlace place, std::string const& path);

    CountedCalls const& Calls() const { return calls_; }

  private:
    void TakeUnreadable(CallRecord const& record, RecordPlace place, std::string const& path);
    template <typename MakeExample>
    void CountCall(CallRecord const& record, AskedSide const& from, AskedSide const& to,
                   ReplayReport& report, MakeExample const& example) const;
    template <typename MakeExample>
    void CountDecision(DecidedCall const& call, RuleSet const& rules, ReplayReport& report,
                       MakeExample const& example) const;
    template <typename MakeExample>
    void Reconcile(CallRecord const& record, Decision decision, Reconciliation::ByRules byRules,
                   ReplayReport& report, MakeExample const& example) const;
    static Example ExampleOf(CallRecord const& record, RecordPlace place, std::string const& path);
    static ReplayReport::File& FileOf(ReplayReport& report, RecordPlace place,
                                      std::string const& path);

    RulesOverTime const& rules_;
    RuleSet const* others_;
    Options const& options_;
    CountedCalls calls_;
};

} // namespace CallRecordingUtils

#endif
