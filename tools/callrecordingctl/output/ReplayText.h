// What a replay counted, in words.

#ifndef CALLRECORDINGCTL_OUTPUT_REPLAYTEXT_H
#define CALLRECORDINGCTL_OUTPUT_REPLAYTEXT_H

#include "Names.h"
#include "records/report/ReportJson.h"

namespace callrecordingctl {

/// Prints the report: the rules, the calls that no rule records, and how the files were read.
void PrintReplay(ReplayReport const& report, ReplayFacts const& facts);

/// Prints what could not be read: lines, and times of calls.
void PrintProblems(ReplayReport const& report);

/// The names of the two lists of rules in headers, and of the other one in a sentence.
struct ListNames {
    char const* here;
    char const* there;
    std::string others;
};

/// Prints how the other rules decide differently.
void PrintDifferences(ReplayReport const& report, RuleList const& here, RuleList const& there,
                      ListNames const& names);

/// What a rule does with a call: "archive:/sales (Sales)", "forbidden (Sales)", or "not recorded"
/// for null.
std::string OutcomeText(Rule const* rule);

} // namespace callrecordingctl

#endif
