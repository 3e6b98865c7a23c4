// Decides calls by a list of rules, and counts them.

#ifndef RECORDS_COUNTING_CALLCOUNTER_H
#define RECORDS_COUNTING_CALLCOUNTER_H

#include <functional>
#include <optional>
#include <string>

#include "calls/AskedSide.h"
#include "calls/RuleSet.h"
#include "model/RuleList.h"
#include "records/counting/ReplayReport.h"
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
    };

    /// others are the rules to compare with, or null. All are borrowed.
    CallCounter(RuleSet const& rules, RuleSet const* others, Options const& options)
        : rules_(rules), others_(others), options_(options) {
        report_.byRule.resize(rules.Rules().size());
    }

    /// Takes the record at this place, in a file with this path.
    void Take(CallRecord const& record, RecordPlace place, std::string const& path);

    ReplayReport const& Report() const { return report_; }

  private:
    void CountQuestion(AskedSide const& from, AskedSide const& to);
    void CountTime(DecidedCall const& call, RecordPlace place);
    void Count(DecidedCall const& call, RecordPlace place);

    RuleSet const& rules_;
    RuleSet const* others_;
    Options const& options_;
    ReplayReport report_;
};

} // namespace CallRecordingUtils

#endif
