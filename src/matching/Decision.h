// The recording decision: whether a rule takes a call, and which rule of a list does so first.

#ifndef MATCHING_DECISION_H
#define MATCHING_DECISION_H

#include <algorithm>

#include <callrecordingutils/CallRecordingRuleParams.h>

#include "matching/CallSide.h"

namespace CallRecordingUtils {

/// A call, as the rules see it.
struct Call {
    /// callerParams and calledParams must outlive the object.
    Call(CallParams const& callerParams, CallType callerType, CallParams const& calledParams,
         CallType calledType)
        : caller(callerParams, callerType), called(calledParams, calledType) {}
    /// The texts must outlive the object.
    Call(TypedText const& callerText, TypedText const& calledText)
        : caller(callerText), called(calledText) {}

    CallSide caller;
    CallSide called;
};

/// Returns whether rule is enabled and satisfied by both sides of call.
inline bool Takes(CallRecordingRuleParams const& rule, Call const& call) {
    return rule.recording_rule_state == RULE_ENABLED &&
           call.caller.Satisfies(rule.caller_pattern, rule.caller_call_type) &&
           call.called.Satisfies(rule.called_pattern, rule.called_call_type);
}

/// Returns false for most rules that do not take call, at next to no cost. True says nothing. The
/// state is not looked at: it lies in another part of the record, which need not be fetched then.
inline bool MayTake(CallRecordingRuleParams const& rule, Call const& call) {
    return call.caller.MaySatisfy(rule.caller_pattern, rule.caller_call_type) &&
           call.called.MaySatisfy(rule.called_pattern, rule.called_call_type);
}

/// Walks over rules, a list of pointers to records in which null entries are passed over. Returns
/// the place of the first one that takes call, which thereby decides; the end when none does.
template <typename Rules>
auto FirstTaking(Rules const& rules, Call const& call) {
    return std::find_if(
        rules.begin(), rules.end(),
        [&call](CallRecordingRuleParams const* rule) {
            return rule != nullptr && MayTake(*rule, call) && Takes(*rule, call);
        });
}

} // namespace CallRecordingUtils

#endif
