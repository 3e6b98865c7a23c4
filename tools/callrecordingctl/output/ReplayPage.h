// The page of a replay, and writing it to a file.

#ifndef CALLRECORDINGCTL_OUTPUT_REPLAYPAGE_H
#define CALLRECORDINGCTL_OUTPUT_REPLAYPAGE_H

#include <string>
#include <vector>

#include "Names.h"
#include "records/report/ReportJson.h"

namespace callrecordingctl {

struct PageOptions {
    std::string path;
    std::string system; ///< Whose calls they are; empty: this computer's.
    std::string policy; ///< The file of the claims in the facts.
};

/// Writes the page to its file, with the reasons why rules never applied as far as analysis
/// knows them. Throws a Failure when it cannot be written.
void WriteReplayPage(PageOptions const& options, ReplayReport const& report,
                     ReplayFacts const& facts);

/// Throws a Failure if the page would overwrite one of the files that are used.
void RequireSparePage(std::string const& page, std::vector<std::string> const& used);

} // namespace callrecordingctl

#endif
