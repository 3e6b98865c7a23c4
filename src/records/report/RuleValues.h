// Rules, and the states of a rule file, as JSON. Each Put has its Get, which takes what Put
// returns.

#ifndef RECORDS_REPORT_RULEVALUES_H
#define RECORDS_REPORT_RULEVALUES_H

#include <cstddef>
#include <map>

#include <nlohmann/json.hpp>

#include "records/report/ReplayFacts.h"

namespace CallRecordingUtils {

nlohmann::json PutRules(RuleList const& rules);
RuleList GetRules(nlohmann::json const& state);

nlohmann::json Put(Moment const& moment);
Moment GetMoment(nlohmann::json const& state);

/// Each state as its differences from the one before it: what an edit changes is little.
nlohmann::json PutEras(std::map<std::size_t, EraFacts> const& eras);
/// There are so many forms.
std::map<std::size_t, EraFacts> GetEras(nlohmann::json const& state, std::size_t forms);

} // namespace CallRecordingUtils

#endif
