// Where the rule file of this process lies.

#ifndef DATABASE_RULEFILEPATH_H
#define DATABASE_RULEFILEPATH_H

#include <cstdlib>
#include <string>

#include "database/RuleFile.h"

namespace CallRecordingUtils {

/// The path of the rule file, from the environment as it is now.
inline std::string RuleFilePath() {
    char const* const directory = std::getenv("QUVA_PATH");
    return RuleFilePathIn(directory != nullptr ? directory : kDefaultDirectory);
}

} // namespace CallRecordingUtils

#endif
