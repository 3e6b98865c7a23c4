// The options of the commands that analyse rules: which calls are asked about, and how much memory
// may be used.

#ifndef CALLRECORDINGCTL_COMMANDS_ANALYSISOPTIONS_H
#define CALLRECORDINGCTL_COMMANDS_ANALYSISOPTIONS_H

#include <cstddef>

#include "CommandLine.h"
#include "analysis/RuleAnalysis.h"

namespace callrecordingctl {

struct AnalysisOptions {
    CallKind calls = CallKind::Typed;
    std::size_t memory = kAnalysisMemory;
};

/// Adds --calls and --memory, in bytes.
void AddAnalysis(CLI::App& command, CallKind& calls, std::size_t& memory);
inline void AddAnalysis(CLI::App& command, AnalysisOptions& options) {
    AddAnalysis(command, options.calls, options.memory);
}

/// What the commands about one rule are asked.
struct RuleQuestion {
    RuleName rule;
    AnalysisOptions analysis;
};
void AddRuleQuestion(CLI::App& command, RuleQuestion& question);

/// Yes if the rule decides calls, no if it never does.
ExitCode CodeOf(RuleReport const& report);

/// Mentions enabled rules with malformed patterns; whose says which file has them.
void NoteMalformed(RuleList const& rules, char const* whose = "");

} // namespace callrecordingctl

#endif
