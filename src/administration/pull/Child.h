// Runs another program for its output, so that nothing of it outlasts the call.

#ifndef ADMINISTRATION_PULL_CHILD_H
#define ADMINISTRATION_PULL_CHILD_H

#include <chrono>
#include <string>
#include <vector>

namespace CallRecordingUtils {

struct ChildResult {
    int status = -1;  ///< The exit status; -1 if it was ended by a signal, or for its time.
    std::string out;  ///< Standard output.
    std::string said; ///< Standard error, the end of it, without white space around it.
    bool isLate = false;
};

/// Runs the program words[0], which is looked for in PATH, with the other words as its arguments.
/// It gets no input, no terminal, and of the environment only what names the user, his network and
/// his keys, so that it asks nobody and obeys no variable of a caller. What it creates only this
/// user can read. It is ended when patience is over, or when this process ends; and it fails when
/// it prints more than mostOutput bytes, or writes a file larger than kLargestChildFile. Throws a
/// std::system_error if it cannot be started.
ChildResult RunChild(std::vector<std::string> const& words, std::chrono::seconds patience,
                     std::size_t mostOutput);

constexpr std::size_t kLargestChildFile = std::size_t{1} << 30;

} // namespace CallRecordingUtils

#endif
