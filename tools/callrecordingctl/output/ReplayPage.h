// The page of a replay, and writing it to a file.

#ifndef CALLRECORDINGCTL_OUTPUT_REPLAYPAGE_H
#define CALLRECORDINGCTL_OUTPUT_REPLAYPAGE_H

#include <string>
#include <vector>

#include "Names.h"
#include "records/report/ReportJson.h"

namespace callrecordingctl {

/// Writes the page to the file at path, with the reasons why rules never applied as far as analysis
/// knows them. Throws a Failure when it cannot be written.
void WriteReplayPage(std::string const& path, ReplayReport const& report, ReplayFacts const& facts);

/// Throws a Failure if the page would overwrite one of the files that are used.
void RequireSparePage(std::string const& page, std::vector<std::string> const& used);

} // namespace callrecordingctl

#endif
