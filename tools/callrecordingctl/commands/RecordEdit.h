// Saving an edit, and recording it in the history.

#ifndef CALLRECORDINGCTL_COMMANDS_RECORDEDIT_H
#define CALLRECORDINGCTL_COMMANDS_RECORDEDIT_H

#include "CommandLine.h"
#include "administration/edit/RuleEdit.h"

namespace callrecordingctl {

/// Saves the edit. If the history cannot be written, a message says so, and the edit is saved all
/// the same.
void SaveAndRecord(RuleEdit& edit, Context const& context);

} // namespace callrecordingctl

#endif
