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

/// Fills in what is left out of the side of a new rule: a pattern that every address matches, and
/// the type that the pattern looks like.
void Complete(SideFields& side);

/// Sets pattern, to its stored form, and type from fields; what is left out there stays. If the
/// pattern is malformed for the type, pattern is unchanged and the return value says what is wrong:
/// a sentence, and on the lines after it the pattern with a caret under the place.
std::optional<std::string> SetSide(SideFields const& fields, std::string& pattern, CallType& type);

} // namespace CallRecordingUtils

#endif
