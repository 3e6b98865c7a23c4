// The options that say in which columns of call records the calls are.

#ifndef CALLRECORDINGCTL_COMMANDS_COLUMNOPTIONS_H
#define CALLRECORDINGCTL_COMMANDS_COLUMNOPTIONS_H

#include "CommandLine.h"
#include "records/reading/CallReader.h"

namespace callrecordingctl {

/// Adds the options to command, which store what they say in format. With another option, needed,
/// they are refused without that one, and the help lists them apart from the others.
void AddColumns(CLI::App& command, CallFormat& format, CLI::Option* needed = nullptr);

} // namespace callrecordingctl

#endif
