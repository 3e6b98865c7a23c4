// Mirrors rules and compares them.

#include "model/RuleSides.h"

#include <utility>

namespace CallRecordingUtils {

CallRecordingRuleParams Mirrored(CallRecordingRuleParams rule) {
    std::swap(rule.caller_pattern, rule.called_pattern);
    std::swap(rule.caller_call_type, rule.called_call_type);
    return rule;
}

bool HaveEqualSettings(CallRecordingRuleParams const& a, CallRecordingRuleParams const& b) {
    return a.call_recording_type == b.call_recording_type && a.record_to == b.record_to &&
           a.recording_duration == b.recording_duration &&
           a.recording_rule_state == b.recording_rule_state;
}

bool AreAlike(CallRecordingRuleParams const& a, CallRecordingRuleParams const& b) {
    return SidesOf(a) == SidesOf(b) && HaveEqualSettings(a, b) && a.description == b.description;
}

bool AreEqual(CallRecordingRuleParams const& a, CallRecordingRuleParams const& b) {
    return a.callrecordingrule_id == b.callrecordingrule_id && AreAlike(a, b);
}

} // namespace CallRecordingUtils
