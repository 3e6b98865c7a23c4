// The database instance: its life, its list of rules, and lookups in the list.

#include <callrecordingutils/CCallRecordingDB.h>

#include <memory>
#include <new>

#include <callrecordingutils/CCallRecordingLogger.h>

#include "common/CancellationHeld.h"
#include "common/DecimalNumber.h"
#include "common/MutexGuard.h"
#include "database/exported/Trace.h"
#include "matching/RuleIndex.h"

namespace CallRecordingUtils {

ThreadMutex cfgThreadMutex;

CCallRecordingDB* CCallRecordingDB::mpInstance = nullptr;
std::int32_t CCallRecordingDB::mInstancesCount = 0;
CCallRecordingLogger* CCallRecordingDB::mpLogger = nullptr;
bool CCallRecordingDB::mIsAdvancedMode = true;

CCallRecordingDB::CCallRecordingDB()
    : mIsLoaded(false), mHasAdvancedRules(false), mpIndex(std::make_unique<RuleIndex>()) {}

CCallRecordingDB::~CCallRecordingDB() {
    Cleanup();
}

CCallRecordingDB* CCallRecordingDB::GetInstance(bool load, bool withLogger) {
    CancellationHeld const held;
    MutexGuard const guard(cfgThreadMutex);
    if (mpInstance == nullptr) {
        auto instance = std::make_unique<CCallRecordingDB>();
        if (withLogger && mpLogger == nullptr)
            mpLogger = new CCallRecordingLogger;
        mpInstance = instance.release();
    }
    if (load)
        mpInstance->Load(); // A failure is traced and kept; the instance can be used without rules.
    ++mInstancesCount;
    return mpInstance;
}

void CCallRecordingDB::CloseInstance() {
    CancellationHeld const held;
    MutexGuard const guard(cfgThreadMutex);
    if (mInstancesCount > 0)
        --mInstancesCount;
    if (mInstancesCount > 0)
        return;
    delete mpInstance;
    mpInstance = nullptr;
    delete mpLogger;
    mpLogger = nullptr;
}

void CCallRecordingDB::SetMode(bool advanced) {
    mIsAdvancedMode = advanced;
}

bool CCallRecordingDB::Reload() {
    CancellationHeld const held;
    Trace(TraceLine::Reloading);
    mIsLoaded = false;
    return Load();
}

void CCallRecordingDB::Cleanup() {
    DestroyCallRecordList();
    mHasAdvancedRules = false;
}

void CCallRecordingDB::DestroyCallRecordList() {
    mpIndex->Clear();
    for (CallRecordingRuleParams* rule : mCallRecordList)
        delete rule;
    mCallRecordList.clear();
}

/// Makes decisions fast. Without enough memory for that they are as correct, by the list as it is.
void CCallRecordingDB::PrepareDecisions() noexcept {
    try {
        // The nodes of a copied list are next to each other in memory instead of between the
        // records, which makes a walk several times as fast.
        std::list<CallRecordingRuleParams*>(mCallRecordList).swap(mCallRecordList);
    } catch (std::bad_alloc const&) {
        return;
    }
    mpIndex->Build(mCallRecordList);
}

void CCallRecordingDB::VisitRules(
    std::function<void(CallRecordingRuleParams const&)> const& visit) const {
    for (CallRecordingRuleParams const* rule : mCallRecordList)
        if (rule != nullptr)
            visit(*rule);
}

bool CCallRecordingDB::CopyRule(std::string const& ruleId, CallRecordingRuleParams& rule) const {
    CallRecordingRuleParams const* const record = FindRecord(ruleId);
    if (record != nullptr)
        rule = *record;
    return record != nullptr;
}

std::list<CallRecordingRuleParams*>& CCallRecordingDB::GetCallRecordingRules() {
    mpIndex->LendList();
    return mCallRecordList;
}

std::string CCallRecordingDB::GetLastFailure() const {
    return mLastFailure;
}

CallRecordingRuleParams* CCallRecordingDB::GetSelectedRule(std::string const& ruleId) {
    mpIndex->LendRecord();
    return FindRecord(ruleId);
}

CallRecordingRuleParams* CCallRecordingDB::FindRecord(std::string const& ruleId) const {
    std::int32_t const id = ParseDecimal(ruleId);
    for (CallRecordingRuleParams* rule : mCallRecordList)
        if (rule != nullptr && rule->callrecordingrule_id == id)
            return rule;
    return nullptr;
}

bool CCallRecordingDB::Find(std::string const& callerPattern, std::string const& calledPattern) {
    for (CallRecordingRuleParams const* rule : mCallRecordList)
        if (rule != nullptr && rule->caller_pattern == callerPattern &&
            rule->called_pattern == calledPattern)
            return true;
    return false;
}

} // namespace CallRecordingUtils
