/// @file
/// The call-recording rule as it is held in memory, and the enumerations for its fields.
///
/// All records here are plain values: a copy has texts of its own and is independent of its source.
/// They have no locks: any number of threads may read a record as long as none writes it.

#ifndef CALLRECORDINGUTILS_CALLRECORDINGRULEPARAMS_H
#define CALLRECORDINGUTILS_CALLRECORDINGRULEPARAMS_H

#include <cstdint>
#include <string>

#include <callrecordingutils/Export.h>

/// The kind of address that one side of a call has, or that one side of a rule asks for.
enum CallType : std::int32_t {
    CALL_TYPE_NUMBER = 0,  ///< A plain number, compared as it is.
    CALL_TYPE_SIP = 1,     ///< A SIP address, compared as user@host:port.
    CALL_TYPE_NUMBER2 = 2, ///< A plain number of a second kind, compared like the first.
    CALL_TYPE_ANY = 3      ///< In a rule: every call type. In a call: no address.
};

namespace CallRecordingUtils {

/// The kind of recording that a rule asks for. The library stores and compares it; what the two
/// values mean is up to the client that records.
enum CALLRECORDINGUTILS_EXPORT CallRecordingTypes : std::int32_t {
    CALL_RECORDING_TYPE_0 = 0,
    CALL_RECORDING_TYPE_1 = 1
};

/// Values of CallRecordingRuleParams::recording_rule_state.
enum RecordingRuleStates : std::int32_t {
    RULE_ENABLED = 0,     ///< Takes part in decisions. Stored as "1".
    RULE_DISABLED = 1,    ///< Never matches. Stored as "0".
    RULE_NOT_SHOWABLE = 2 ///< The basic view cannot show it, and it never matches. Stored as "0",
                          ///< so it reads back as RULE_DISABLED.
};

/// One call-recording rule. The fields are named after the keys of the rule file.
struct CALLRECORDINGUTILS_EXPORT CallRecordingRuleParams {
    /// A rule that is not stored yet: identifier -1, enabled, both call types any, all texts empty.
    CallRecordingRuleParams();
    /// Copies every field.
    CallRecordingRuleParams(CallRecordingRuleParams const& other);
    /// Copies every field. Assigning a record to itself changes nothing.
    CallRecordingRuleParams& operator=(CallRecordingRuleParams const& other);
    ~CallRecordingRuleParams();

    /// Unique within the rule file; CCallRecordingDB::AddRule assigns it. -1: not stored yet.
    std::int32_t callrecordingrule_id;
    /// The pattern of the calling side, in the matched form (see CCallRecordingAssistant.h). An
    /// empty pattern never matches.
    std::string caller_pattern;
    /// The call type that the calling side must have.
    CallType caller_call_type;
    /// The pattern of the called side, as caller_pattern.
    std::string called_pattern;
    /// The call type that the called side must have.
    CallType called_call_type;
    /// The kind of recording to make.
    CallRecordingTypes call_recording_type;
    /// Where to record to. Text that only the client interprets.
    std::string record_to;
    /// How long to record. Text that only the client interprets.
    std::string recording_duration;
    /// Free text.
    std::string description;
    /// One of RecordingRuleStates.
    std::int32_t recording_rule_state;
};

/// The record_to of a rule that forbids recording.
inline constexpr char const* kNeverRecord = "never:";

/// Returns whether rule forbids to record the calls that it takes. The classes of this library do
/// not know of such rules: CCallRecordingAssistant::IsCallRecordingAllowed returns true for their
/// calls and hands out the rule. So a host of that class asks, before it records:
///
///     if (assistant.IsCallRecordingAllowed(caller, callerType, called, calledType, &rule) &&
///         !ForbidsRecording(rule))
///
/// The interface in C does that itself. In the basic view a rule that forbids becomes one that
/// never matches if its twin is missing or says something else, so decide in the advanced view.
inline bool ForbidsRecording(CallRecordingRuleParams const& rule) {
    return rule.record_to == kNeverRecord;
}

/// A rule of the basic view while a load merges it with the other rules of its key pattern, which
/// is the pattern of the side with call type number.
struct CallRecordingRuleMapParams {
    /// The rule that will be listed.
    CallRecordingRuleParams params;
    /// Whether another rule has this key pattern on the opposite side.
    bool has_mirror = false;
};

} // namespace CallRecordingUtils

#endif
