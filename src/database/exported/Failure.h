// Turns an exception of a load or edit into a kept reason and a trace line.

#ifndef DATABASE_FAILURE_H
#define DATABASE_FAILURE_H

#include <string>

#include "database/exported/Trace.h"

namespace CallRecordingUtils {

/// Adds the reason of the exception that is being handled to reasons, with the path of the rule
/// file if the exception does not name it. REQUIRES: called from a catch block.
void KeepReason(std::string& reasons) noexcept;

/// Adds reason to reasons, after "; " if there are others, unless it is the last one already.
void KeepReason(std::string& reasons, char const* reason) noexcept;

/// Runs step and returns its result. If it throws, the reason is added to reasons, failure is
/// traced, and the result is false.
template <typename Step>
bool Attempt(std::string& reasons, TraceLine failure, Step step) {
    try {
        return step();
    } catch (...) {
        KeepReason(reasons);
        Trace(failure);
        return false;
    }
}

} // namespace CallRecordingUtils

#endif
