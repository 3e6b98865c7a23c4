// The part of the manual page that the program knows itself.

#ifndef CALLRECORDINGCTL_MANUAL_H
#define CALLRECORDINGCTL_MANUAL_H

#include <CLI/CLI.hpp>

namespace callrecordingctl {

/// The word with which the build asks for it.
constexpr char kManualCommand[] = "__manual";

/// Prints the help of all commands, with every option, in Markdown. man-page.sh joins it with
/// callrecordingctl.1.md.
void PrintManual(CLI::App& app);

} // namespace callrecordingctl

#endif
