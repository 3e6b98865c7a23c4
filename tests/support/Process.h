/// @file
/// Runs a program and collects what it prints.

#ifndef TESTS_SUPPORT_PROCESS_H
#define TESTS_SUPPORT_PROCESS_H

#include <cstdlib>
#include <string>
#include <vector>

#include <sys/wait.h>

#include "support/TempDir.h"

struct Outcome {
    int code; // The exit status; -1 when the program ended in another way.
    std::string out;
    std::string err;
};

/// Runs a line of the shell. May be called by several threads at once.
inline Outcome RunShell(std::string const& line) {
    TempDir const files;
    std::string const redirected =
        "{ " + line + "; } >" + files.Path("out") + " 2>" + files.Path("err");
    int const status = std::system(redirected.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, files.Read("out"), files.Read("err")};
}

/// The line of the shell that runs a command of these words, of which none has a "'".
inline std::string Line(std::vector<std::string> const& command) {
    std::string line;
    for (std::string const& word : command)
        line += "'" + word + "' ";
    return line;
}

#endif
