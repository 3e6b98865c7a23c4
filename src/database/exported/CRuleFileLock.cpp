// The lock for integrators: without exceptions, on the rule file of this process.

#include <callrecordingutils/CRuleFileLock.h>

#include <chrono>

#include "common/CancellationHeld.h"
#include "database/RuleFileLock.h"
#include "database/exported/Failure.h"
#include "database/exported/RuleFilePath.h"

namespace CallRecordingUtils {

CRuleFileLock::CRuleFileLock(std::uint32_t timeout) noexcept {
    CancellationHeld const held;
    try {
        mLock = std::make_unique<RuleFileLock>(RuleFilePath(), std::chrono::milliseconds(timeout));
    } catch (...) {
        KeepReason(mFailure);
    }
}

CRuleFileLock::~CRuleFileLock() {
    CancellationHeld const held;
    mLock.reset();
}

bool CRuleFileLock::IsHeld() const noexcept {
    return mLock != nullptr;
}

std::string CRuleFileLock::GetFailure() const {
    return mFailure;
}

} // namespace CallRecordingUtils
