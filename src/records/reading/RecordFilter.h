// Which records count: those that meet conditions, and the first of those with equal values.

#ifndef RECORDS_READING_RECORDFILTER_H
#define RECORDS_READING_RECORDFILTER_H

#include <string>
#include <unordered_set>
#include <vector>

#include "records/reading/CallFormat.h"
#include "records/reading/CallRecord.h"

namespace CallRecordingUtils {

/// Grows with the number of values.
using SeenValues = std::unordered_set<std::string>;

/// Returns what "method=INVITE" and "method!=BYE" say. Throws std::invalid_argument with the
/// reason.
Condition ReadCondition(std::string const& text);

class RecordFilter {
  public:
    /// Adds the columns that it looks at to those that format wants. seen, unless null, outlives
    /// it.
    void Begin(CallFormat& format, std::vector<std::string> const& distinct, SeenValues* seen);

    /// Whether the record counts. A line that is no record does.
    bool Takes(CallRecord const& record);

  private:
    std::vector<Condition> conditions_;
    std::size_t first_ = 0; // The place of the conditions' columns among the wanted ones.
    bool isDistinct_ = false;
    SeenValues own_;
    SeenValues* seen_ = nullptr;
};

} // namespace CallRecordingUtils

#endif
