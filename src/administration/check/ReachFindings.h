// Finds what is wrong, or worth knowing, about which calls the rules of a file decide.

#ifndef ADMINISTRATION_CHECK_REACHFINDINGS_H
#define ADMINISTRATION_CHECK_REACHFINDINGS_H

#include <vector>

#include "administration/check/FileFindings.h"

namespace CallRecordingUtils {

/// Returns the findings in the order of the rules.
std::vector<FileFinding> FindReach(std::vector<StoredRule> const& rules,
                                   CheckOptions const& options);

} // namespace CallRecordingUtils

#endif
