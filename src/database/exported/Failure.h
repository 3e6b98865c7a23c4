// What every load and edit does with an exception: the reason is kept, and a line traced.

#ifndef DATABASE_FAILURE_H
#define DATABASE_FAILURE_H

#include <string>

#include "database/exported/Trace.h"

namespace CallRecordingUtils {

/// Adds to reasons why the exception that is being handled was thrown, and the path of the rule
/// file where it does not say it.
void KeepReason(std::string& reasons) noexcept;

/// Adds reason to reasons, unless they end in it already.
void KeepReason(std::string& reasons, char const* reason) noexcept;

/// Runs step, which returns whether it succeeded. Whatever it throws is kept in reasons, and
/// becomes the trace line failure and the result false.
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
