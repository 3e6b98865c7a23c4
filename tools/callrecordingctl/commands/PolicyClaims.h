// The claims of a policy file about the rules of a report.

#ifndef CALLRECORDINGCTL_COMMANDS_POLICYCLAIMS_H
#define CALLRECORDINGCTL_COMMANDS_POLICYCLAIMS_H

#include <string>
#include <vector>

#include "Names.h"
#include "records/report/ReplayFacts.h"

namespace callrecordingctl {

/// Proves each claim of the file at policy for the rules of each era, equal ones once, for typed
/// calls and for calls of parties. Eras of which the same is said are told together. Throws a
/// Failure that names the line.
std::vector<ClaimFacts> ProveClaims(std::string const& policy, WholeReport const& report);

} // namespace callrecordingctl

#endif
