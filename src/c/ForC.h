// What the functions of the C interface share: nothing that C++ throws leaves them.

#ifndef C_FORC_H
#define C_FORC_H

#include <cstdint>

#include <callrecordingutils/CallRecordingRuleParams.h>

#include "common/CancellationHeld.h"

namespace CallRecordingUtils {

/// Whether type is a call type from 0 to greatest.
constexpr bool IsCallType(std::int32_t type, CallType greatest) {
    return CALL_TYPE_NUMBER <= type && type <= greatest;
}

/// Runs step; if it throws, the result is failed. The unwinding of a cancelled thread must not come
/// through here either.
template <typename Result, typename Step>
Result Guarded(Result failed, Step step) noexcept {
    CancellationHeld const held;
    try {
        return step();
    } catch (...) {
        return failed;
    }
}

} // namespace CallRecordingUtils

#endif
