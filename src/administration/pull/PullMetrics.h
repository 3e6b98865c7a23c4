// What the last pull did, for the text files that a node exporter reads.

#ifndef ADMINISTRATION_PULL_PULLMETRICS_H
#define ADMINISTRATION_PULL_PULLMETRICS_H

#include <cstdint>
#include <optional>
#include <string>

#include "administration/pull/TakenCommit.h"

namespace CallRecordingUtils {

struct PullMetrics {
    int status = 0;                   ///< The exit status.
    std::optional<TakenCommit> taken; ///< The commit taken last.
    std::int64_t takenSeconds = 0;    ///< When.
    std::string digest;               ///< Of the rule file; empty if it is not known.
};

/// Replaces the file at path, which exporters find whole at any time; of a directory, its file
/// callrecording.prom. What it said about the last pull that succeeded stays if this one did not.
/// Throws a std::exception that names the file.
void WritePullMetrics(std::string const& path, PullMetrics const& metrics);

} // namespace CallRecordingUtils

#endif
