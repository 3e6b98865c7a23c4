// The recording decision: which rule of a list takes a call.

#ifndef MATCHING_DECISION_H
#define MATCHING_DECISION_H

#include <algorithm>

#include <callrecordingutils/CallRecordingRuleParams.h>

#include "matching/CallSide.h"

namespace CallRecordingUtils {

/// A call, as the rules see it.
struct Call {
    /// The records must outlive the object.
    Call(CallParams const& callerParams, CallType callerType, CallParams const& calledParams,
         CallType calledType)
        : caller(callerParams, callerType), called(calledParams, calledType) {}

    CallSide caller;
    CallSide called;
};

/// Returns whether rule is enabled and satisfied by both sides of call.
inline bool Takes(CallRecordingRuleParams const& rule, Call const& call) {
    return rule.recording_rule_state == RULE_ENABLED &&
           call.caller.Satisfies(rule.caller_pattern, rule.caller_call_type) &&
           call.called.Satisfies(rule.called_pattern, rule.called_call_type);
}

/// The same, for rules of which most do not take the call: the cheap tests of both sides come
/// before the search of either, and the state, which lies in a part of the record that need not be
/// fetched for most rules, behind them.
inline bool TakesAfterAll(CallRecordingRuleParams const& rule, Call const& call) {
    return call.caller.MaySatisfy(rule.caller_pattern, rule.caller_call_type) &&
           call.called.MaySatisfy(rule.called_pattern, rule.called_call_type) && Takes(rule, call);
}

/// Returns the place of the rule that decides call: the first one in rules, a list of pointers to
/// records in which null entries are passed over, that takes it; the end of rules when none does.
template <typename Rules>
auto DecidingRule(Rules const& rules, Call const& call) {
    return std::find_if(
        rules.begin(), rules.end(),
        [&call](CallRecordingRuleParams const* rule) {
            return rule != nullptr && TakesAfterAll(*rule, call);
        });
}

} // namespace CallRecordingUtils

#endif
