// Messages on standard error.

#include "Failure.h"

#include <cstdio>

#include <unistd.h>

#include <nlohmann/json.hpp>

#include "output/Screen.h"
#include "text/Printable.h"
#include "text/Wrap.h"

namespace callrecordingctl {
namespace {

bool usesJson = false;

void Print(nlohmann::ordered_json const& message) {
    std::fputs(
        (message.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + '\n').c_str(),
        stderr);
}

/// Makes each line safe for a terminal, and keeps the line ends.
void Print(std::string const& message) {
    std::string lines = "callrecordingctl: ";
    for (std::size_t begin = 0; begin <= message.size();) {
        std::size_t const end = std::min(message.find('\n', begin), message.size());
        lines += Printable(message.substr(begin, end - begin)) + '\n';
        begin = end + 1;
    }
    std::fputs(WrapLines(lines, ScreenWidth(STDERR_FILENO)).c_str(), stderr);
}

} // namespace

void UseJsonMessages() {
    usesJson = true;
}

void SayError(std::string const& message, ExitCode code) {
    if (usesJson)
        Print({{"error", message}, {"exit_status", static_cast<int>(code)}});
    else
        Print(message);
}

void SayNote(std::string const& message) {
    if (usesJson)
        Print({{"note", message}});
    else
        Print(message);
}

} // namespace callrecordingctl
