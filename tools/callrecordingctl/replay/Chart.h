// Calls over time as an SVG, which needs no script.

#ifndef CALLRECORDINGCTL_REPLAY_CHART_H
#define CALLRECORDINGCTL_REPLAY_CHART_H

#include <string>

#include "replay/Replay.h"

namespace callrecordingctl {

/// A bar for each stretch of time, divided by what decided the calls: the rules with most calls,
/// the other rules, no rule. Empty where no call has a time.
std::string ChartOf(Timeline timeline, RuleList const& rules);

/// "rule 4, Sales", escaped.
std::string RuleHtml(Rule const& rule);

} // namespace callrecordingctl

#endif
