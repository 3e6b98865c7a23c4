// Loading: turns the sections of the rule file into the rule list, in either view mode.

#include <map>
#include <memory>
#include <utility>

#include <callrecordingutils/CCallRecordingDB.h>

#include "database/RuleFile.h"
#include "database/RuleFilePath.h"
#include "database/Trace.h"

namespace CallRecordingUtils {
namespace {

constexpr char kLoadingFailed[] = "Loading Call Recording configuration failed\n";

using RuleList = std::list<CallRecordingRuleParams*>;

void AppendRule(RuleList& list, std::unique_ptr<CallRecordingRuleParams> rule) {
    list.push_back(rule.get());
    (void)rule.release(); // The list owns it, now that it holds it.
}

/// Merges rules by their key pattern, the pattern of the side of call type number: a rule of the
/// basic view is a pair of sections that mirror each other.
class BasicView {
  public:
    explicit BasicView(CCallRecordingDB& db) : db_(db) {}

    void Add(CallRecordingRuleParams const& rule) {
        bool const keyedOnCalled = rule.called_call_type == CALL_TYPE_NUMBER;
        if (!keyedOnCalled && rule.caller_call_type != CALL_TYPE_NUMBER) {
            db_.mHasAdvancedRules = true;
            return;
        }
        CallType const other = keyedOnCalled ? rule.caller_call_type : rule.called_call_type;
        if (other != CALL_TYPE_ANY)
            db_.mHasAdvancedRules = true;
        Merge(keyedOnCalled ? rule.called_pattern : rule.caller_pattern, rule);
    }

    /// Lists the merged rules in the order of their key patterns.
    void List(RuleList& list) const {
        for (auto const& [pattern, entry] : entries_) {
            auto rule = std::make_unique<CallRecordingRuleParams>(entry.params);
            if (!entry.has_mirror)
                rule->recording_rule_state = RULE_NOT_SHOWABLE;
            AppendRule(list, std::move(rule));
        }
    }

  private:
    void Merge(std::string const& keyPattern, CallRecordingRuleParams const& rule) {
        auto const found = entries_.find(keyPattern);
        if (found == entries_.end()) {
            CallRecordingRuleMapParams entry{rule, false};
            db_.VerifyBasicViewModeRuleValidation(entry);
            entries_.emplace(keyPattern, entry);
            return;
        }
        CallRecordingRuleMapParams& entry = found->second;
        bool const showable = entry.params.recording_rule_state != RULE_NOT_SHOWABLE;
        if (showable && !db_.IsIdenticallRules(&rule, entry))
            entry.params.recording_rule_state = RULE_NOT_SHOWABLE;
    }

    CCallRecordingDB& db_;
    std::map<std::string, CallRecordingRuleMapParams> entries_; // By key pattern, byte by byte.
};

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
    BasicView basicView(*this);
    while (file.Next()) {
        auto rule = std::make_unique<CallRecordingRuleParams>(file.ReadRule());
        if (mIsAdvancedMode)
            AppendRule(mCallRecordList, std::move(rule));
        else
            basicView.Add(*rule);
    }
    if (!mIsAdvancedMode)
        basicView.List(mCallRecordList);
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
