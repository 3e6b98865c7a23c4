// What can stand at a place of the command line, for the completion of shells.

#ifndef CALLRECORDINGCTL_COMPLETION_H
#define CALLRECORDINGCTL_COMPLETION_H

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace callrecordingctl {

/// The word with which the shells' scripts ask.
constexpr char kCompleteCommand[] = "__complete";

/// Prints a line for each thing that the last of words, which is being typed, may become: the
/// thing, a tab, and what it is. The line :files or :directories asks the shell to complete these
/// itself. words is the line behind the program's name.
void PrintCompletions(CLI::App& app, std::vector<std::string> const& words);

} // namespace callrecordingctl

#endif
