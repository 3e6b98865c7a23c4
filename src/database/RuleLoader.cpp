// Loading: turns the sections of the rule file into the rule list, in either view mode.

#include <memory>

#include <callrecordingutils/CCallRecordingDB.h>

#include "database/RuleFile.h"
#include "database/RuleFilePath.h"
#include "database/Trace.h"
#include "model/BasicView.h"

namespace CallRecordingUtils {
namespace {

constexpr char kLoadingFailed[] = "Loading Call Recording configuration failed\n";

using RuleList = std::list<CallRecordingRuleParams*>;

void AppendRule(RuleList& list, CallRecordingRuleParams const& rule) {
    auto record = std::make_unique<CallRecordingRuleParams>(rule);
    list.push_back(record.get());
    (void)record.release(); // The list owns it, now that it holds it.
}

} // namespace

bool CCallRecordingDB::Load() {
    if (mIsLoaded) {
        Trace(kTraceNotice, "Call Recording Configuration is already loaded\n");
        return true;
    }
    bool succeeded = true;
    try {
        ReadRuleFile();
    } catch (...) {
        if (!mIsAdvancedMode)
            DestroyCallRecordList(); // Half of the merged rules would mislead.
        Trace(kTraceFailure, kLoadingFailed);
        succeeded = false;
    }
    mIsLoaded = true;
    Trace(kTraceNotice, "Loaded: Call Recording Configuration\n");
    return succeeded;
}

void CCallRecordingDB::ReadRuleFile() {
    Cleanup();
    RuleFile file(RuleFilePath());
    BasicView basicView;
    while (file.Next()) {
        CallRecordingRuleParams const rule = file.ReadRule();
        if (mIsAdvancedMode)
            AppendRule(mCallRecordList, rule);
        else
            basicView.Add(rule);
        mHasAdvancedRules = mHasAdvancedRules || basicView.HasAdvancedRules();
    }
    for (CallRecordingRuleParams const& rule : basicView.Rules())
        AppendRule(mCallRecordList, rule);
    // A copy has its nodes side by side instead of among the records. Every decision walks them,
    // each node telling where the next one is, and that wait is most of the walk.
    RuleList(mCallRecordList).swap(mCallRecordList);
}

bool CCallRecordingDB::GetCurrentSection(Configuration::MultiSectionFile* file,
                                         CallRecordingRuleParams& rule) {
    if (file == nullptr)
        return true;
    try {
        SectionReader(*file).ReadRule(rule);
        return true;
    } catch (...) {
        Trace(kTraceFailure, kLoadingFailed);
        return false;
    }
}

} // namespace CallRecordingUtils
