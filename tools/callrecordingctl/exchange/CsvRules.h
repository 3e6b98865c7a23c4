// Rules as comma-separated values, as import reads them.

#ifndef CALLRECORDINGCTL_EXCHANGE_CSVRULES_H
#define CALLRECORDINGCTL_EXCHANGE_CSVRULES_H

#include <string>

#include "Rules.h"

namespace callrecordingctl {

std::string CsvHeader();
std::string CsvRow(Rule const& rule);

} // namespace callrecordingctl

#endif
