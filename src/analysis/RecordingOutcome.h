// What the decision of a rule means for a call, and when two decisions mean the same.

#ifndef ANALYSIS_RECORDINGOUTCOME_H
#define ANALYSIS_RECORDINGOUTCOME_H

#include <callrecordingutils/CallRecordingRuleParams.h>

namespace CallRecordingUtils {

/// A rule that records to this takes its calls and says that they are not to be recorded.
inline constexpr char kRecordToNever[] = "never:";

inline bool Forbids(CallRecordingRuleParams const& rule) {
    return rule.record_to == kRecordToNever;
}

/// Whether a call that rule decides is recorded; null: no rule decides it.
inline bool Records(CallRecordingRuleParams const* rule) {
    return rule != nullptr && !Forbids(*rule);
}

/// Whether calls are recorded alike by both, or by neither.
inline bool AreAlike(CallRecordingRuleParams const* a, CallRecordingRuleParams const* b) {
    if (!Records(a) || !Records(b))
        return Records(a) == Records(b);
    return a->call_recording_type == b->call_recording_type && a->record_to == b->record_to &&
           a->recording_duration == b->recording_duration;
}

} // namespace CallRecordingUtils

#endif
