// Long output on a terminal.

#ifndef CALLRECORDINGCTL_OUTPUT_PAGER_H
#define CALLRECORDINGCTL_OUTPUT_PAGER_H

#include <string>

namespace callrecordingctl {

/// Prints text; where standard output is a terminal with fewer lines, through the program that
/// PAGER names, else less. An empty PAGER, or cat, means none.
void Page(std::string const& text);

} // namespace callrecordingctl

#endif
