// What an edit changes, in words and in JSON.

#ifndef CALLRECORDINGCTL_OUTPUT_EDITREPORT_H
#define CALLRECORDINGCTL_OUTPUT_EDITREPORT_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "CommandLine.h"
#include "administration/edit/Changes.h"
#include "output/ComparisonText.h"
#include "records/counting/Replay.h"

namespace callrecordingctl {

/// The change in a sentence; count is the number of rules after it.
std::string Sentence(Change const& change, std::size_t count);

/// The fields that differ, old and new: "- record to archive:/a" and "+ record to archive:/b".
/// Those of a rule that is new or deleted, unless they are empty.
std::vector<std::string> FieldLines(Change const& change);

nlohmann::ordered_json ChangesToJson(std::vector<Change> const& changes);

/// What a dry run finds out about calls.
struct DryRun {
    RuleList const& before;
    RuleList const& after;
    std::optional<ComparedCalls> calls; ///< Nothing if the file before is malformed.
    std::optional<ReplayReport> replay; ///< Of call records; nothing if none were given.
};

struct ReportOptions {
    std::size_t count;    ///< Of the rules after the edit.
    bool verbose;         ///< Report each rule, also those that only made room.
    DryRun const* dryRun; ///< Null for an edit that is made.
};

/// Prints the changes, of a dry run also what they mean for calls.
void ReportEdit(std::vector<Change> const& changes, ReportOptions const& options,
                Context const& context);

} // namespace callrecordingctl

#endif
