// What the service did, in the text format of Prometheus.

#ifndef CALLRECORDINGD_METRICS_H
#define CALLRECORDINGD_METRICS_H

#include <cstdint>
#include <string>

#include "Answers.h"
#include "LiveRules.h"

namespace callrecordingd {

/// lostLines is the number of answers that could not be appended to the file of --answers.
std::string MetricsText(LiveRules const& rules, AnswerCounts const& answers,
                        std::uint64_t lostLines);

} // namespace callrecordingd

#endif
