// Rules as comma-separated values, which ReadCsvRules reads again.

#ifndef ADMINISTRATION_EXCHANGE_CSVRULES_H
#define ADMINISTRATION_EXCHANGE_CSVRULES_H

#include <string>

#include "model/RuleList.h"

namespace CallRecordingUtils {

std::string CsvHeader();
std::string CsvRow(Rule const& rule);

} // namespace CallRecordingUtils

#endif
