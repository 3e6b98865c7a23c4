// What the decision of a rule means for a call, and when two decisions mean the same. A null rule
// stands for no rule.

#ifndef MODEL_RECORDINGOUTCOME_H
#define MODEL_RECORDINGOUTCOME_H

#include <callrecordingutils/CallRecordingRuleParams.h>

namespace CallRecordingUtils {

/// Whether a call that rule decides is recorded.
inline bool Records(CallRecordingRuleParams const* rule) {
    return rule != nullptr && !ForbidsRecording(*rule);
}

/// Whether calls are recorded in the same way to the same place by both rules, or by neither.
inline bool HaveSameOutcome(CallRecordingRuleParams const* a, CallRecordingRuleParams const* b) {
    if (!Records(a) || !Records(b))
        return Records(a) == Records(b);
    return a->call_recording_type == b->call_recording_type && a->record_to == b->record_to &&
           a->recording_duration == b->recording_duration;
}

} // namespace CallRecordingUtils

#endif
