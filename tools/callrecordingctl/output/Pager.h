// Shows long output on a terminal.

#ifndef CALLRECORDINGCTL_OUTPUT_PAGER_H
#define CALLRECORDINGCTL_OUTPUT_PAGER_H

#include <cstddef>
#include <string>

namespace callrecordingctl {

/// Prints text; where standard output is a terminal with fewer lines, through the program that
/// PAGER names, else less. With an empty PAGER, or cat, there is no paging. The first headerLines
/// stay on the screen where less can do that.
void Page(std::string const& text, std::size_t headerLines = 0);

} // namespace callrecordingctl

#endif
