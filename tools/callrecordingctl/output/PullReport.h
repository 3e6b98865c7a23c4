// What a pull has changed, or found, in words and in JSON.

#ifndef CALLRECORDINGCTL_OUTPUT_PULLREPORT_H
#define CALLRECORDINGCTL_OUTPUT_PULLREPORT_H

#include <cstddef>
#include <string>

#include "Names.h"
#include "administration/edit/RuleEdit.h"
#include "administration/pull/TakenCommit.h"
#include "analysis/RuleAnalysis.h"

namespace callrecordingctl {

struct PullReportOptions {
    bool isDryRun;
    bool json;
    CallKind calls;
    std::size_t memory;
};

/// The changes between two lists, a line each with two blanks in front, after a line end.
std::string ChangesText(RuleList const& before, RuleList const& after);

void ReportNothingNew(TakenCommit const& taken, std::string const& digest, bool json);

/// Prints which rules and calls change by taking the commit.
void ReportPull(RuleEdit& edit, TakenCommit const& taken, PullReportOptions const& options);

} // namespace callrecordingctl

#endif
