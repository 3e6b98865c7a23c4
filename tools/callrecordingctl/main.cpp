// callrecordingctl: the standard streams, and the commands.

#include <csignal>
#include <cstdio>
#include <exception>

#include <fcntl.h>
#include <unistd.h>

#include "CommandLine.h"
#include "commands/Registry.h"

int main(int argc, char** argv) {
    // A file opened in the place of a closed standard stream would take what is printed there.
    for (int file = 0; file >= 0 && file <= STDERR_FILENO;)
        file = open("/dev/null", O_RDWR);
    // A reader that has seen enough, as head has, ends this process without a word.
    std::signal(SIGPIPE, SIG_DFL);
    // At a limit on the size of files a write fails, which is reported; the signal would end this
    // process without a word.
    std::signal(SIGXFSZ, SIG_IGN);
    try {
        callrecordingctl::CommandLine line;
        callrecordingctl::AddCommands(line);
        return line.Run(argc, argv);
    } catch (std::exception const& error) {
        std::fprintf(stderr, "callrecordingctl: %s\n", error.what()); // Output, or memory.
        return callrecordingctl::kExitUnsaved;
    }
}
