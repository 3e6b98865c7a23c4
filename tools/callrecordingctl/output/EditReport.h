// What an edit changed, in words or in JSON.

#ifndef CALLRECORDINGCTL_OUTPUT_EDITREPORT_H
#define CALLRECORDINGCTL_OUTPUT_EDITREPORT_H

#include <cstddef>
#include <vector>

#include "edit/RuleEdit.h"

namespace callrecordingctl {

/// Prints the changes; count is the number of rules after them.
void ReportEdit(std::vector<Change> const& changes, std::size_t count, bool dryRun, bool json);

} // namespace callrecordingctl

#endif
