// How the files of a replay were read, for people and programs.

#ifndef RECORDS_REPORT_READING_H
#define RECORDS_REPORT_READING_H

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "records/counting/ReplayReport.h"

namespace CallRecordingUtils {

/// One sentence for all files that were read alike: their format, whether that was guessed, the
/// columns, what was left out.
std::vector<std::string> ReadingSentences(std::vector<ReplayReport::File> const& files);

nlohmann::ordered_json ToJson(CallReading const& reading);

} // namespace CallRecordingUtils

#endif
