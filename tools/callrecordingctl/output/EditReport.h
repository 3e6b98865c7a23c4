// What an edit changed, in words or in JSON.

#ifndef CALLRECORDINGCTL_OUTPUT_EDITREPORT_H
#define CALLRECORDINGCTL_OUTPUT_EDITREPORT_H

#include <cstddef>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "CommandLine.h"
#include "administration/edit/RuleEdit.h"
#include "commands/EditReplay.h"

namespace callrecordingctl {

/// The change in a sentence; count is the number of the rules after it.
std::string Sentence(Change const& change, std::size_t count);

nlohmann::ordered_json ChangesToJson(std::vector<Change> const& changes);

struct ReportOptions {
    std::size_t count; ///< Of the rules after the edit.
    bool dryRun;
    bool verbose;             ///< Every rule, also those that only moved along.
    EditReplay const* replay; ///< What the edit does to calls of call records, or null.
};

/// Prints the changes.
void ReportEdit(std::vector<Change> const& changes, ReportOptions const& options,
                Context const& context);

} // namespace callrecordingctl

#endif
