// What was recorded against what should have been, for people and programs.

#ifndef RECORDS_REPORT_RECONCILIATIONREPORT_H
#define RECORDS_REPORT_RECONCILIATIONREPORT_H

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "model/RuleList.h"
#include "records/counting/ReplayReport.h"

namespace CallRecordingUtils {

/// How many calls were compared, how many of all were not, and why. Nothing where nothing is known
/// of recordings or answers.
std::vector<std::string> ReconciliationSentences(ReplayReport const& report);

/// "yes", "no", "undecided", or "none" for a call about which nobody asked.
char const* AnswerWord(Answer answer);
char const* ByRulesWord(Reconciliation::ByRules byRules);
char const* WasRecordedWord(WasRecorded was);

/// The part of the report's JSON, null where nothing is known.
nlohmann::ordered_json ReconciliationToJson(ReplayReport const& report, RuleList const& rules);

} // namespace CallRecordingUtils

#endif
