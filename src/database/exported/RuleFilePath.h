// The path of this process's rule file.

#ifndef DATABASE_RULEFILEPATH_H
#define DATABASE_RULEFILEPATH_H

#include <cstdlib>
#include <string>

#include "database/RuleFile.h"

namespace CallRecordingUtils {

/// Returns the path of the rule file, by the environment as it is now.
inline std::string RuleFilePath() {
    char const* const directory = std::getenv("QUVA_PATH");
    return RuleFilePathIn(directory != nullptr ? directory : kDefaultDirectory);
}

} // namespace CallRecordingUtils

#endif
