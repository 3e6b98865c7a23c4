// One side of a rule as people give it: a pattern in the entry form, a call type, or both.

#ifndef ADMINISTRATION_EDIT_SIDEFIELDS_H
#define ADMINISTRATION_EDIT_SIDEFIELDS_H

#include <optional>
#include <string>

#include "model/RuleList.h"

namespace CallRecordingUtils {

struct SideFields {
    std::optional<std::string> pattern; ///< In the entry form.
    std::optional<CallType> type;
};

/// Fills in what a new side leaves out: every address, and the type that the pattern looks like.
void Complete(SideFields& side);

/// Sets pattern, in the stored form, and type to those of fields; what fields leave out stays.
/// Returns what is wrong when the pattern cannot be one of the type, as a sentence, with a caret
/// under the place on the lines after it; pattern is unchanged then.
std::optional<std::string> SetSide(SideFields const& fields, std::string& pattern, CallType& type);

} // namespace CallRecordingUtils

#endif
