// An edit of the history, in words and in JSON.

#ifndef CALLRECORDINGCTL_OUTPUT_EDITSTEP_H
#define CALLRECORDINGCTL_OUTPUT_EDITSTEP_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "Names.h"
#include "administration/edit/Changes.h"
#include "administration/history/HistoryEntry.h"

namespace callrecordingctl {

/// An edit with what it changed.
struct EditStep {
    HistoryEntry const& entry;
    std::vector<Change> changes;
    std::string problem;           ///< Why the changes are not known; empty if they are.
    std::size_t count;             ///< How many rules there were afterwards.
    std::int64_t uncertain = 0;    ///< The edit before whose changes are in these, too; or 0.
    std::optional<Change> about{}; ///< The only change that is asked for.
    bool isBlurred = false;        ///< about may be the doing of a later edit.
};

struct StepStyle {
    bool isVerbose = false; ///< All rules, and whole commands.
    bool hasFields = false; ///< Old and new, field by field.
};

/// The edit in one line, as messages name it: "edit 3 of 2026-11-25 14:03:11 by anna: COMMAND". A
/// command that names hundreds of rules is cut.
std::string EditName(HistoryEntry const& entry);

std::string ToText(EditStep const& step, StepStyle style);
nlohmann::ordered_json ToJson(EditStep const& step);

} // namespace callrecordingctl

#endif
