// Loads the rule file: makes the list of rules from its sections, in either view.

#include <memory>
#include <utility>

#include <callrecordingutils/CCallRecordingDB.h>

#include "common/CancellationHeld.h"
#include "database/RuleFile.h"
#include "database/exported/Failure.h"
#include "database/exported/RuleFilePath.h"
#include "database/exported/Trace.h"
#include "model/BasicView.h"

namespace CallRecordingUtils {
namespace {

using RuleList = std::list<CallRecordingRuleParams*>;

void AppendRule(RuleList& list, std::unique_ptr<CallRecordingRuleParams> record) {
    list.push_back(record.get());
    (void)record.release(); // The list owns it from now on.
}

} // namespace

bool CCallRecordingDB::Load() {
    CancellationHeld const held;
    if (mIsLoaded) {
        Trace(TraceLine::AlreadyLoaded);
        return true;
    }
    mLastFailure.clear();
    bool const succeeded = Attempt(mLastFailure, TraceLine::LoadingFailed, [&] {
        ReadRuleFile();
        return true;
    });
    if (!succeeded && !mIsAdvancedMode)
        DestroyCallRecordList(); // A part of the merged rules would be misleading.
    PrepareDecisions();
    mIsLoaded = true;
    Trace(TraceLine::Loaded);
    return succeeded;
}

void CCallRecordingDB::ReadRuleFile() {
    Cleanup();
    RuleFile file(RuleFilePath());
    BasicView basicView;
    while (file.Next()) {
        // The rule is read into the record itself, so its texts are not copied.
        std::unique_ptr<CallRecordingRuleParams> rule(new CallRecordingRuleParams(file.ReadRule()));
        if (mIsAdvancedMode)
            AppendRule(mCallRecordList, std::move(rule));
        else
            basicView.Add(*rule);
        mHasAdvancedRules = mHasAdvancedRules || basicView.HasAdvancedRules();
    }
    for (CallRecordingRuleParams const& rule : basicView.Rules())
        AppendRule(mCallRecordList, std::make_unique<CallRecordingRuleParams>(rule));
}

bool CCallRecordingDB::GetCurrentSection(Configuration::MultiSectionFile* file,
                                         CallRecordingRuleParams& rule) {
    if (file == nullptr)
        return true;
    CancellationHeld const held;
    mLastFailure.clear();
    return Attempt(mLastFailure, TraceLine::LoadingFailed, [&] {
        SectionReader(*file).ReadRule(rule);
        return true;
    });
}

} // namespace CallRecordingUtils
