/// @file
/// Rules, their sections as the library writes them, and the edits of the database as values.

#ifndef TESTS_SUPPORT_EDITS_H
#define TESTS_SUPPORT_EDITS_H

#include <functional>
#include <string>

#include <callrecordingutils/CCallRecordingDB.h>

namespace CallRecordingUtils {

inline CallRecordingRuleParams Rule(int id, char const* caller, CallType callerType,
                                    char const* called, CallType calledType,
                                    char const* recordTo = "") {
    CallRecordingRuleParams rule;
    rule.callrecordingrule_id = id;
    rule.caller_pattern = caller;
    rule.caller_call_type = callerType;
    rule.called_pattern = called;
    rule.called_call_type = calledType;
    rule.record_to = recordTo;
    return rule;
}

/// Returns the section of rule as the library writes it. id replaces the identifier.
inline std::string Section(CallRecordingRuleParams const& rule, std::string const& id = "") {
    return "{\ncallrecordingrule_id=" +
           (id.empty() ? std::to_string(rule.callrecordingrule_id) : id) +
           "\ncaller_pattern=" + rule.caller_pattern +
           "\ncaller_call_type=" + std::to_string(rule.caller_call_type) +
           "\ncalled_pattern=" + rule.called_pattern +
           "\ncalled_call_type=" + std::to_string(rule.called_call_type) +
           "\ncall_recording_type=" + std::to_string(rule.call_recording_type) +
           "\nrecord_to=" + rule.record_to + "\nrecording_duration=" + rule.recording_duration +
           "\ndescription=" + rule.description +
           "\nrecording_rule_state=" + (rule.recording_rule_state == 0 ? "1" : "0") + "\n}\n";
}

inline CallRecordingRuleParams const kA = Rule(0, "100", CALL_TYPE_NUMBER, "*", CALL_TYPE_ANY, "a");
inline CallRecordingRuleParams const kTwinOfA =
    Rule(1, "*", CALL_TYPE_ANY, "100", CALL_TYPE_NUMBER, "t");
inline CallRecordingRuleParams const kB =
    Rule(7, "bob", CALL_TYPE_SIP, "2*", CALL_TYPE_NUMBER2, "b");
inline CallRecordingRuleParams const kC =
    Rule(3, "5", CALL_TYPE_NUMBER, "5", CALL_TYPE_NUMBER, "c");

inline CallRecordingRuleParams With(CallRecordingRuleParams rule, int id,
                                    char const* recordTo = nullptr) {
    rule.callrecordingrule_id = id;
    if (recordTo != nullptr)
        rule.record_to = recordTo;
    return rule;
}

inline CallRecordingRuleParams Disabled(CallRecordingRuleParams rule) {
    rule.recording_rule_state = RULE_NOT_SHOWABLE; // Stored like every state other than enabled.
    return rule;
}

using Edit = std::function<bool(CCallRecordingDB&)>;

inline Edit Add(CallRecordingRuleParams rule) {
    return [rule](CCallRecordingDB& db) mutable { return db.AddRule(&rule); };
}
inline Edit Modify(CallRecordingRuleParams rule, bool twin) {
    return [rule, twin](CCallRecordingDB& db) { return db.ModifyRule(&rule, twin); };
}
inline Edit Delete(CallRecordingRuleParams rule) {
    return [rule](CCallRecordingDB& db) { return db.DeleteRule(&rule); };
}
inline Edit Delete(std::string id) {
    return [id](CCallRecordingDB& db) { return db.DeleteRule(id); };
}
inline Edit Move(std::string id, bool up) {
    return [id, up](CCallRecordingDB& db) { return db.ReOrderRule(id, up); };
}
inline Edit MoveTo(std::string id, std::size_t place) {
    return [id, place](CCallRecordingDB& db) { return db.MoveRule(id, place); };
}
inline Edit SetState(std::string id, bool enable) {
    return [id, enable](CCallRecordingDB& db) { return db.SetRuleState(id, enable); };
}

} // namespace CallRecordingUtils

#endif
