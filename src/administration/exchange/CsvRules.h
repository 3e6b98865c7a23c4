// Rules as comma-separated values, as import reads them.

#ifndef ADMINISTRATION_EXCHANGE_CSVRULES_H
#define ADMINISTRATION_EXCHANGE_CSVRULES_H

#include <string>

#include "model/RuleList.h"

namespace CallRecordingUtils {

std::string CsvHeader();
std::string CsvRow(Rule const& rule);

} // namespace CallRecordingUtils

#endif
