// The answer to a claim about calls, in words.

#ifndef CALLRECORDINGCTL_OUTPUT_PROOFTEXT_H
#define CALLRECORDINGCTL_OUTPUT_PROOFTEXT_H

#include <string>

#include "Failure.h"
#include "Rules.h"
#include "analysis/RuleAnalysis.h"

namespace callrecordingctl {

/// Yes only if it is proved, and of some call.
ExitCode CodeOf(Proof const& proof);

/// "false: the call from 1 to 112 is not recorded".
std::string ProofText(RuleList const& rules, Proof const& proof);

} // namespace callrecordingctl

#endif
