// How a command ends, and what it says besides its data: exit codes, the exception that carries one
// with its message, and messages on standard error.

#ifndef CALLRECORDINGCTL_FAILURE_H
#define CALLRECORDINGCTL_FAILURE_H

#include <stdexcept>
#include <string>
#include <utility>

#include <fmt/format.h>

#include "Names.h"

namespace callrecordingctl {

enum ExitCode : int {
    kExitYes = 0,        ///< Yes, or done.
    kExitNo = 1,         ///< No rule matches, a pattern is malformed, the check found something.
    kExitUsage = 2,      ///< Wrong usage.
    kExitUnreadable = 3, ///< The rule file cannot be read.
    kExitUnsaved = 4,    ///< It cannot be saved, or the lock on it cannot be had.
    kExitNoSuchRule = 5, ///< There is no such rule, or more than one.
    kExitUndecided = 6,  ///< The question was not decided within the memory allowed.
    kExitChanged = 7,    ///< The rule file is not the one that the command was meant for.
    kExitStopped = 130,  ///< Stopped by Ctrl-C, after a report on what was done until then.
};

/// Ends the command. what() is for standard error and names the culprit.
class Failure : public std::runtime_error {
  public:
    Failure(ExitCode code, std::string const& message) : std::runtime_error(message), code_(code) {}
    ExitCode Code() const { return code_; }

  private:
    ExitCode code_;
};

/// From now on every message is a JSON object on a line of its own.
void UseJsonMessages();

/// Prints what went wrong on standard error.
void SayError(std::string const& message, ExitCode code);

/// Prints a message on standard error after the program's name. Failing to print it never ends an
/// edit.
void SayNote(std::string const& message);

template <typename... Values>
void Say(fmt::format_string<Values...> text, Values&&... values) {
    SayNote(fmt::format(text, std::forward<Values>(values)...));
}

} // namespace callrecordingctl

#endif
