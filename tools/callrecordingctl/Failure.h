/// @file
/// How a command ends and what it says beside its data: the exit codes, the exception that carries
/// one with its message, and messages on standard error.

#ifndef CALLRECORDINGCTL_FAILURE_H
#define CALLRECORDINGCTL_FAILURE_H

#include <cstdio>
#include <stdexcept>
#include <string>
#include <utility>

#include <fmt/format.h>

namespace callrecordingctl {

enum ExitCode : int {
    EXIT_CODE_YES = 0,   ///< Yes, or done.
    EXIT_CODE_NO = 1,    ///< No rule matches, a pattern is malformed, the check found something.
    EXIT_CODE_USAGE = 2, ///< Wrong usage.
    EXIT_CODE_UNREADABLE = 3,   ///< The rule file cannot be read.
    EXIT_CODE_UNSAVED = 4,      ///< It cannot be saved, or the lock on it cannot be had.
    EXIT_CODE_NO_SUCH_RULE = 5, ///< There is no such rule, or more than one.
};

/// Ends the command. what() is for standard error and names the culprit.
class Failure : public std::runtime_error {
  public:
    Failure(ExitCode code, std::string const& message) : std::runtime_error(message), mCode(code) {}
    ExitCode Code() const { return mCode; }

  private:
    ExitCode mCode;
};

/// Prints a message on standard error. That it cannot be written is no reason to end an edit.
template <typename... Values>
void Say(fmt::format_string<Values...> text, Values&&... values) {
    std::fputs(fmt::format(text, std::forward<Values>(values)...).c_str(), stderr);
}

} // namespace callrecordingctl

#endif
