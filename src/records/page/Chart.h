// Calls over time as an SVG, without scripts.

#ifndef RECORDS_PAGE_CHART_H
#define RECORDS_PAGE_CHART_H

#include <string>

#include "records/counting/Replay.h"

namespace CallRecordingUtils {

/// A bar for each stretch of time, divided by what decided the calls: the rules with the most
/// calls, the other rules, no rule; below it the same numbers as a table, and what is left out.
/// Empty when no call that was decided has a time.
std::string ChartOf(ReplayReport const& report, RuleList const& rules);

/// "rule 4, Sales", escaped.
std::string RuleHtml(Rule const& rule);

} // namespace CallRecordingUtils

#endif
