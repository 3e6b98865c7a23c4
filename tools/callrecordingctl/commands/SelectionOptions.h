// The arguments and options that select rules.

#ifndef CALLRECORDINGCTL_COMMANDS_SELECTIONOPTIONS_H
#define CALLRECORDINGCTL_COMMANDS_SELECTIONOPTIONS_H

#include "CommandLine.h"

namespace callrecordingctl {

/// What a command does when nothing is selected.
enum class WithoutSelection { IsRefused, MeansAll };

/// Adds identifiers, positions and ranges as arguments, and the filters. The names of the filters
/// for the state may be longer lists, as CLI11 takes them.
void AddSelection(CLI::App& command, RuleSelection& selection, WithoutSelection without,
                  char const* isEnabled = "--is-enabled", char const* isDisabled = "--is-disabled");

} // namespace callrecordingctl

#endif
