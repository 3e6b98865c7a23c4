// The rules of a file with their lines, for reports on the file itself.

#ifndef ADMINISTRATION_INSPECTION_STOREDRULES_H
#define ADMINISTRATION_INSPECTION_STOREDRULES_H

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include <callrecordingutils/CallRecordingRuleParams.h>

#include "database/RuleKeys.h"
#include "model/RuleList.h"

namespace CallRecordingUtils {

/// A rule as the file holds it. Lines are counted from 1.
struct StoredRule {
    struct Entry {
        std::string key;
        std::size_t line;
    };

    CallRecordingRuleParams rule;                        ///< As the library reads it.
    std::array<std::string, RULE_FILE_KEY_COUNT> values; ///< By RuleFileKeys, as the file has them.
    std::size_t line;                                    ///< Of the line that opens the section.
    std::vector<Entry> entries; ///< In the order of the file, unknown and repeated keys too.

    /// The line of the first entry of key; that of the section if it lacks the key.
    std::size_t LineOf(RuleFileKeys key) const;
};

/// Returns the rules of the file at path in their order; none if there is no file. Throws a
/// std::exception with path, line and reason.
std::vector<StoredRule> ReadStoredRules(std::string const& path);

/// Returns the rules of a rule file with this text. Throws an Error with name, line and reason.
std::vector<StoredRule> StoredRulesOf(std::string const& text, std::string const& name);

} // namespace CallRecordingUtils

#endif
