// The options that say how call records are read.

#ifndef CALLRECORDINGCTL_COMMANDS_READINGOPTIONS_H
#define CALLRECORDINGCTL_COMMANDS_READINGOPTIONS_H

#include "CommandLine.h"
#include "records/reading/CallReader.h"

namespace callrecordingctl {

/// Adds the options to command, which store what they say in format. With another option, needed,
/// they are refused without that one, and the help lists them apart from the others.
/// Returns --distinct, which not all can use.
CLI::Option* AddReading(CLI::App& command, CallFormat& format, CLI::Option* needed = nullptr);

} // namespace callrecordingctl

#endif
