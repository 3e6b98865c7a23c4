// What is known of a rule file: its rules, the last edit, what check finds, and its history.

#ifndef CALLRECORDINGCTL_COMMANDS_STATUSREPORT_H
#define CALLRECORDINGCTL_COMMANDS_STATUSREPORT_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include <nlohmann/json.hpp>

#include "Names.h"
#include "administration/history/HistoryEntry.h"

namespace callrecordingctl {

/// The extent of a history.
struct HistoryExtent {
    std::size_t edits = 0;
    std::optional<HistoryEntry> first, last;
    std::optional<std::int64_t>
        statesSince;          ///< From when on the rules are kept; nothing if always.
    std::uintmax_t bytes = 0; ///< Of the file.
    std::string problem;      ///< Why it cannot be read; empty if it can.
};

/// What there is to say about the rule file of a path.
struct StatusReport {
    std::string path, digest;
    std::string problem; ///< Why the rules cannot be read; empty if they can.
    bool isMissing = false;
    std::size_t rules = 0, on = 0;
    std::map<std::string, std::size_t> findings; ///< How many of each kind, without notes.
    std::size_t notes = 0;
    HistoryExtent history;
};

/// Looks everything up. Throws a Failure if there is no place for a rule file, or no access to it.
StatusReport FindStatus(std::string const& path);

void PrintStatus(StatusReport const& status);
nlohmann::ordered_json ToJson(StatusReport const& status);

} // namespace callrecordingctl

#endif
