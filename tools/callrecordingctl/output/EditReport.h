// What an edit changed, in words or in JSON.

#ifndef CALLRECORDINGCTL_OUTPUT_EDITREPORT_H
#define CALLRECORDINGCTL_OUTPUT_EDITREPORT_H

#include <cstddef>
#include <vector>

#include "CommandLine.h"
#include "edit/RuleEdit.h"

namespace callrecordingctl {

struct ReportOptions {
    std::size_t count; ///< Of the rules after the edit.
    bool dryRun;
    bool verbose; ///< Every rule, also those that only moved along.
};

/// Prints the changes.
void ReportEdit(std::vector<Change> const& changes, ReportOptions const& options,
                Context const& context);

} // namespace callrecordingctl

#endif
