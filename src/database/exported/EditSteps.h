// What the edits of the rule file share: how one runs and fails, and how it finds its section.

#ifndef DATABASE_EDITSTEPS_H
#define DATABASE_EDITSTEPS_H

#include <cstdint>
#include <string>

#include <StringUtils.h>

#include "common/CancellationHeld.h"
#include "database/RuleFileEdit.h"
#include "database/exported/Failure.h"

namespace CallRecordingUtils {

/// Runs edit, which returns the result of the operation. When it throws, the reason is kept in
/// reasons, failure is traced, and the result is false.
template <typename Edit>
bool RunEdit(std::string& reasons, TraceLine failure, Edit edit) {
    CancellationHeld const held;
    reasons.clear();
    return Attempt(reasons, failure, edit);
}

/// Runs a part of saving a rule: whatever operation that is for, a failure is traced as
/// SaveSelectedRule's. Returns whether step succeeded.
template <typename Step>
bool AttemptSave(std::string& reasons, Step step) {
    return Attempt(
        reasons, TraceLine::SavingFailed,
        [&step] {
            step();
            return true;
        });
}

inline bool IsRuleId(std::string const& text) {
    return StringUtils::IsNumeric(text, false, false);
}

/// Accepts a section whose identifier is exactly the text ruleId.
inline auto HasIdText(std::string const& ruleId) {
    return [&ruleId](SectionReader& section) {
        char const* const text = section.Read(KEY_CALLRECORDINGRULE_ID);
        return text != nullptr && ruleId == text;
    };
}

/// Accepts a section whose identifier, read as a number, is id.
inline auto HasId(std::int32_t id) {
    return [id](SectionReader& section) { return section.ReadId() == id; };
}

} // namespace CallRecordingUtils

#endif
