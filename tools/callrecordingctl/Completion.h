// Completion of the command line, for shells.

#ifndef CALLRECORDINGCTL_COMPLETION_H
#define CALLRECORDINGCTL_COMPLETION_H

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace callrecordingctl {

/// The hidden command that the scripts of the shells call.
constexpr char kCompleteCommand[] = "__complete";

/// Prints a line for each completion of the last of words, which is being typed: the completion, a
/// tab, and what it is. The line :files or :directories asks the shell to complete these itself.
/// words is the command line after the program's name.
void PrintCompletions(CLI::App& app, std::vector<std::string> const& words);

} // namespace callrecordingctl

#endif
