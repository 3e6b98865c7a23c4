// Takes the rules of a rule file as records.

#include <fmt/format.h>

#include "administration/exchange/RuleRecord.h"
#include "administration/inspection/StoredRules.h"

namespace CallRecordingUtils {
namespace {

struct Field {
    RuleFileKeys key;
    RuleMember member;
};

// In the file the state is 1 for enabled, as in "enabled" and unlike in "recording_rule_state".
constexpr Field kFields[] = {{KEY_CALLRECORDINGRULE_ID, RuleMember::Id},
                             {KEY_CALLER_PATTERN, RuleMember::CallerPattern},
                             {KEY_CALLER_CALL_TYPE, RuleMember::CallerType},
                             {KEY_CALLED_PATTERN, RuleMember::CalledPattern},
                             {KEY_CALLED_CALL_TYPE, RuleMember::CalledType},
                             {KEY_CALL_RECORDING_TYPE, RuleMember::RecordingType},
                             {KEY_RECORD_TO, RuleMember::RecordTo},
                             {KEY_RECORDING_DURATION, RuleMember::Duration},
                             {KEY_DESCRIPTION, RuleMember::Description},
                             {KEY_RECORDING_RULE_STATE, RuleMember::Enabled}};

RuleRecord RecordOf(StoredRule const& stored) {
    RuleRecord record;
    record.line = stored.line;
    for (auto const& [key, member] : kFields)
        record.values[member] = {stored.values[key], stored.LineOf(key), kRuleKeys[key]};
    return record;
}

} // namespace

RuleRecords ReadRuleFileRules(std::string const& text, std::string const& name) {
    RuleRecords result;
    for (StoredRule const& stored : StoredRulesOf(text, name))
        result.records.push_back(RecordOf(stored));
    return result;
}

} // namespace CallRecordingUtils
