// The rule record.

#include <callrecordingutils/CallRecordingRuleParams.h>

namespace CallRecordingUtils {

CallRecordingRuleParams::CallRecordingRuleParams()
    : callrecordingrule_id(-1), caller_call_type(CALL_TYPE_ANY), called_call_type(CALL_TYPE_ANY),
      call_recording_type(CALL_RECORDING_TYPE_0), recording_rule_state(RULE_ENABLED) {}

CallRecordingRuleParams::CallRecordingRuleParams(CallRecordingRuleParams const&) = default;

CallRecordingRuleParams&
CallRecordingRuleParams::operator=(CallRecordingRuleParams const&) = default;

CallRecordingRuleParams::~CallRecordingRuleParams() = default;

} // namespace CallRecordingUtils
