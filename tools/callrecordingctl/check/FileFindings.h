// What is wrong with the rules of a file, each with its line.

#ifndef CALLRECORDINGCTL_CHECK_FILEFINDINGS_H
#define CALLRECORDINGCTL_CHECK_FILEFINDINGS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "inspection/StoredRules.h"

namespace callrecordingctl {

struct FileFinding {
    std::size_t line;
    std::size_t position; ///< Of the rule.
    std::int32_t id;      ///< As the library reads it.
    std::string message;
    std::string caret; ///< The pattern with a caret under the place, if it is about a pattern.
};

/// Whether the identifier of stored is the text of a number from 0 on, as every edit finds it.
bool IsPlainId(CallRecordingUtils::StoredRule const& stored);

/// In the order of their lines.
std::vector<FileFinding> FindFaults(std::vector<CallRecordingUtils::StoredRule> const& rules);

} // namespace callrecordingctl

#endif
