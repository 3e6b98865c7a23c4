// The two comparisons that judge rules in basic view mode.

#include <callrecordingutils/CCallRecordingDB.h>

#include "model/RuleSides.h"

namespace CallRecordingUtils {
namespace {

bool AreDirectEqual(CallRecordingRuleParams const& a, CallRecordingRuleParams const& b) {
    return SidesOf(a) == SidesOf(b) && HaveEqualSettings(a, b);
}

bool AreCrossedEqual(CallRecordingRuleParams const& a, CallRecordingRuleParams const& b) {
    return AreTwins(a, b) && HaveEqualSettings(a, b);
}

bool AcceptsEveryone(RuleSide const& side) {
    return side.type == CALL_TYPE_ANY && side.pattern == "*";
}

} // namespace

void CCallRecordingDB::VerifyBasicViewModeRuleValidation(CallRecordingRuleMapParams& entry) {
    auto const [caller, called] = SidesOf(entry.params);
    bool const fitsCalled = called.type != CALL_TYPE_NUMBER || AcceptsEveryone(caller);
    bool const fitsCaller = caller.type != CALL_TYPE_NUMBER || AcceptsEveryone(called);
    if (!fitsCalled || !fitsCaller)
        entry.params.recording_rule_state = RULE_NOT_SHOWABLE;
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
