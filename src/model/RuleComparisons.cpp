// The two comparisons that judge rules in basic view mode.

#include <callrecordingutils/CCallRecordingDB.h>

namespace CallRecordingUtils {
namespace {

/// One side of a rule, seen apart from the other.
struct RuleSide {
    std::string const& pattern;
    CallType type;

    bool operator==(RuleSide const& other) const {
        return type == other.type && pattern == other.pattern;
    }
};

RuleSide CallerSide(CallRecordingRuleParams const& rule) {
    return {rule.caller_pattern, rule.caller_call_type};
}

RuleSide CalledSide(CallRecordingRuleParams const& rule) {
    return {rule.called_pattern, rule.called_call_type};
}

bool HaveEqualSettings(CallRecordingRuleParams const& a, CallRecordingRuleParams const& b) {
    return a.call_recording_type == b.call_recording_type && a.record_to == b.record_to &&
           a.recording_duration == b.recording_duration &&
           a.recording_rule_state == b.recording_rule_state;
}

bool AreDirectEqual(CallRecordingRuleParams const& a, CallRecordingRuleParams const& b) {
    return CallerSide(a) == CallerSide(b) && CalledSide(a) == CalledSide(b) &&
           HaveEqualSettings(a, b);
}

bool AreCrossedEqual(CallRecordingRuleParams const& a, CallRecordingRuleParams const& b) {
    return CallerSide(a) == CalledSide(b) && CalledSide(a) == CallerSide(b) &&
           HaveEqualSettings(a, b);
}

bool AcceptsEveryone(RuleSide const& side) {
    return side.type == CALL_TYPE_ANY && side.pattern == "*";
}

} // namespace

void CCallRecordingDB::VerifyBasicViewModeRuleValidation(CallRecordingRuleMapParams& entry) {
    CallRecordingRuleParams& rule = entry.params;
    bool const fitsCalled =
        rule.called_call_type != CALL_TYPE_NUMBER || AcceptsEveryone(CallerSide(rule));
    bool const fitsCaller =
        rule.caller_call_type != CALL_TYPE_NUMBER || AcceptsEveryone(CalledSide(rule));
    if (!fitsCalled || !fitsCaller)
        rule.recording_rule_state = RULE_NOT_SHOWABLE;
}

// Where several of the comparisons apply, the last one decides: they are not combined.
bool CCallRecordingDB::IsIdenticallRules(CallRecordingRuleParams const* rule,
                                         CallRecordingRuleMapParams& entry) {
    if (rule == nullptr)
        return false;
    CallRecordingRuleParams const& listed = entry.params;
    bool identical = false;
    if (rule->called_call_type == CALL_TYPE_NUMBER) {
        if (listed.called_call_type == CALL_TYPE_NUMBER)
            identical = AreDirectEqual(*rule, listed);
        if (listed.caller_call_type == CALL_TYPE_NUMBER) {
            entry.has_mirror = true;
            identical = AreCrossedEqual(*rule, listed);
        }
    }
    if (rule->caller_call_type == CALL_TYPE_NUMBER) {
        if (listed.caller_call_type == CALL_TYPE_NUMBER)
            identical = AreDirectEqual(*rule, listed);
        if (listed.called_call_type == CALL_TYPE_NUMBER) {
            entry.has_mirror = true;
            identical = AreCrossedEqual(*rule, listed);
        }
    }
    return identical;
}

} // namespace CallRecordingUtils
