// Sentences about the time between the first and the last call.

#ifndef RECORDS_REPORT_PERIODTEXT_H
#define RECORDS_REPORT_PERIODTEXT_H

#include <string>
#include <vector>

#include "records/report/ReplayFacts.h"

namespace CallRecordingUtils {

/// When the file had a rule, "since 2026-11-12 10:00:00" or "throughout": of the beginning and the
/// end only what lies in the period.
std::string InFileText(RuleSpan const& span);

/// "made between 2026-11-12 10:00:00 and 2026-11-13 10:00:00, when it was first seen": of a change
/// from outside.
std::string MadeText(EditFacts const& edit);

/// "3, perhaps 1 more": how many edits were made in the period.
std::string EditCountText(std::vector<EditFacts> const& edits);

/// One for each time of the period of whose rules nothing is known.
std::vector<std::string> UnknownSentences(std::vector<EraFacts> const& unknown);

} // namespace CallRecordingUtils

#endif
