/// @file
/// Runs a program and collects what it prints.

#ifndef TESTS_SUPPORT_PROCESS_H
#define TESTS_SUPPORT_PROCESS_H

#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

struct Outcome {
    int code; // The exit status; 128 and the number of the signal when one ended the program.
    std::string out;
    std::string err;
};

inline std::string TakeContent(std::FILE* file) {
    std::string content;
    std::rewind(file);
    for (int c = std::fgetc(file); c != EOF; c = std::fgetc(file))
        content += static_cast<char>(c);
    std::fclose(file);
    return content;
}

/// Runs command, whose first word is a path. May be called by several threads at once.
inline Outcome RunProcess(std::vector<std::string> const& command) {
    std::vector<char*> arguments;
    for (std::string const& word : command)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    std::FILE* const out = std::tmpfile();
    std::FILE* const err = std::tmpfile();
    pid_t const child = fork();
    if (child == 0) {
        dup2(fileno(out), STDOUT_FILENO);
        dup2(fileno(err), STDERR_FILENO);
        execv(arguments[0], arguments.data());
        _exit(127);
    }
    int status = 0;
    if (out == nullptr || err == nullptr || child < 0 || waitpid(child, &status, 0) != child)
        throw std::runtime_error("cannot run " + command.front());
    int const code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return {code, TakeContent(out), TakeContent(err)};
}

#endif
