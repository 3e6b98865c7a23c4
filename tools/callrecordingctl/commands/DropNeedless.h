// The part of check that deletes rules.

#ifndef CALLRECORDINGCTL_COMMANDS_DROPNEEDLESS_H
#define CALLRECORDINGCTL_COMMANDS_DROPNEEDLESS_H

#include "CommandLine.h"
#include "administration/check/FileFindings.h"
#include "administration/edit/RuleEdit.h"

namespace callrecordingctl {

/// Deletes the rules that can go without any call being decided differently, typed or of parties.
/// Throws a Failure if that cannot be proved.
ExitCode DropNeedless(RuleEdit& edit, CheckOptions const& options, bool json);

} // namespace callrecordingctl

#endif
