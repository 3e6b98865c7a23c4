// What was counted by the rules of each era.

#ifndef RECORDS_COUNTING_COUNTEDCALLS_H
#define RECORDS_COUNTING_COUNTEDCALLS_H

#include <cstddef>
#include <map>

#include "records/counting/ReplayReport.h"

namespace CallRecordingUtils {

struct CountedCalls {
    std::map<std::size_t, ReplayReport> byEra;
    ReplayReport
        apart; ///< Calls that belong to no era or to one of unknown rules, unreadable lines.

    /// Adds other, which counted other calls of the same files by the same rules.
    void Add(CountedCalls const& other) {
        for (auto const& [era, report] : other.byEra)
            byEra[era].Add(report);
        apart.Add(other.apart);
    }
    /// Makes the files of these calls those behind the first ones of other calls.
    void MoveBehind(std::size_t files) {
        for (auto& entry : byEra)
            entry.second.MoveBehind(files);
        apart.MoveBehind(files);
    }
};

} // namespace CallRecordingUtils

#endif
