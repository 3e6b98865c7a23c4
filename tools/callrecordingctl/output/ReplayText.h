// What a replay counted, in words.

#ifndef CALLRECORDINGCTL_OUTPUT_REPLAYTEXT_H
#define CALLRECORDINGCTL_OUTPUT_REPLAYTEXT_H

#include "replay/ReportJson.h"

namespace callrecordingctl {

/// Prints the report: the rules, what none of them takes, and what is to be said about the files.
void PrintReplay(ReplayReport const& report, ReplayFacts const& facts);

/// Prints how the other rules decide differently. there says what these are: "the rules in FILE".
void PrintDifferences(ReplayReport const& report, RuleList const& here, RuleList const& others,
                      std::string const& there);

/// Prints one call with its decision as a line of fields with tabs between them: time, from, to,
/// identifier of the rule, destination.
void PrintCall(DecidedCall const& call, RuleList const& rules);

/// What a rule does with a call: "archive:/sales (Sales)", or "not recorded" for null.
std::string OutcomeText(Rule const* rule);

} // namespace callrecordingctl

#endif
