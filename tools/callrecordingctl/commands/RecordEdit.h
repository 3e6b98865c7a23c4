// Saving an edit, and recording it in the history.

#ifndef CALLRECORDINGCTL_COMMANDS_RECORDEDIT_H
#define CALLRECORDINGCTL_COMMANDS_RECORDEDIT_H

#include <optional>
#include <string>

#include "CommandLine.h"
#include "administration/edit/RuleEdit.h"

namespace callrecordingctl {

/// Saves the edit, with the reason that message or else CALLRECORDINGCTL_MESSAGE gives. If the
/// history cannot be written, a message says so, and the edit is saved all the same.
void SaveAndRecord(RuleEdit& edit, Context const& context,
                   std::optional<std::string> const& message);

} // namespace callrecordingctl

#endif
