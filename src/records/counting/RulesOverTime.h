// The rules by which calls are decided: the same ones for all calls, or those of its time for each.

#ifndef RECORDS_COUNTING_RULESOVERTIME_H
#define RECORDS_COUNTING_RULESOVERTIME_H

#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

#include "calls/RuleSet.h"
#include "model/RuleList.h"
#include "records/reading/CallTime.h"

namespace CallRecordingUtils {

/// Any number of threads may ask at once.
class RulesOverTime {
  public:
    /// Reads the rules of an era; nothing if they are not known.
    using Load = std::function<std::optional<RuleList>(std::size_t era)>;

    /// One era, to which all calls belong, with a time or without.
    explicit RulesOverTime(RuleList const& rules);

    /// Each era begins at one of these moments, and lasts until the next one, also by what clocks
    /// show: where one was set back, an era may be empty. load is called once for each era that has
    /// calls, never by two threads at once, and may throw.
    RulesOverTime(std::vector<Moment> begins, Load load);

    /// The era of a call; nothing for one before the first era or without a time. Where the instant
    /// is not known, the time is compared with what a clock showed when the eras began.
    std::optional<std::size_t> EraOf(std::optional<CallTime> time,
                                     std::optional<Instant> instant) const;

    /// The rules of the era; null if they are not known.
    RuleSet const* In(std::size_t era) const;

  private:
    struct Era {
        std::once_flag isLoaded;
        std::optional<RuleSet> rules;
    };

    std::vector<Moment> begins_; // Empty where all calls belong to one era.
    Load load_;
    mutable std::mutex loading_;
    mutable std::deque<Era> eras_;
};

} // namespace CallRecordingUtils

#endif
