/// @file
/// The call-recording rule as it is held in memory, and the two enumerations that type its fields.
///
/// All records here are plain values: copying copies every text, and a copy is independent of its
/// source. They have no locks; two threads may read one record, but not while a third writes it.

#ifndef CALLRECORDINGUTILS_CALLRECORDINGRULEPARAMS_H
#define CALLRECORDINGUTILS_CALLRECORDINGRULEPARAMS_H

#include <cstdint>
#include <string>

#include <callrecordingutils/Export.h>

/// What kind of address a side of a call has, and what kind a side of a rule asks for.
enum CallType : std::int32_t {
    CALL_TYPE_NUMBER = 0,  ///< A plain number, compared unchanged.
    CALL_TYPE_SIP = 1,     ///< A SIP address, compared as user@host:port.
    CALL_TYPE_NUMBER2 = 2, ///< A plain number of a second kind, matched exactly like the first.
    CALL_TYPE_ANY = 3      ///< On a rule side: every call type. On a call side: no address at all.
};

namespace CallRecordingUtils {

/// The kind of recording that a rule asks for. The library stores and compares it; what the two
/// values mean belongs to the client that records.
enum CALLRECORDINGUTILS_EXPORT CallRecordingTypes : std::int32_t {
    CALL_RECORDING_TYPE_0 = 0,
    CALL_RECORDING_TYPE_1 = 1
};

/// Values of CallRecordingRuleParams::recording_rule_state.
enum RecordingRuleStates : std::int32_t {
    RULE_ENABLED = 0,     ///< Takes part in decisions. Stored as "1".
    RULE_DISABLED = 1,    ///< Never matches. Stored as "0".
    RULE_NOT_SHOWABLE = 2 ///< Never matches: the basic view cannot show it. Stored as "0", so that
                          ///< it reads back as RULE_DISABLED.
};

/// One call-recording rule. The fields are named after the keys of the rule file.
struct CALLRECORDINGUTILS_EXPORT CallRecordingRuleParams {
    /// A rule not yet stored: identifier -1, both sides of any call type, enabled, all texts empty.
    CallRecordingRuleParams();
    /// Copies every field.
    CallRecordingRuleParams(CallRecordingRuleParams const& other);
    /// Copies every field. Copying a record onto itself leaves it as it is.
    CallRecordingRuleParams& operator=(CallRecordingRuleParams const& other);
    ~CallRecordingRuleParams();

    /// Unique within the rule file and assigned by CCallRecordingDB::AddRule; -1: not yet stored.
    std::int32_t callrecordingrule_id;
    /// Pattern of the calling side, in the matched form (see CCallRecordingAssistant.h). An empty
    /// pattern never matches.
    std::string caller_pattern;
    /// Call type that the calling side must have.
    CallType caller_call_type;
    /// Pattern of the called side, as caller_pattern.
    std::string called_pattern;
    /// Call type that the called side must have.
    CallType called_call_type;
    /// Kind of recording to make.
    CallRecordingTypes call_recording_type;
    /// Where to record to: free text for the client.
    std::string record_to;
    /// How long to record: text that only the client interprets.
    std::string recording_duration;
    /// Free text.
    std::string description;
    /// One of RecordingRuleStates.
    std::int32_t recording_rule_state;
};

/// A rule while a load in basic view mode merges it with the others of its key pattern.
struct CallRecordingRuleMapParams {
    /// The rule that will be listed.
    CallRecordingRuleParams params;
    /// A further rule of the same key pattern, keyed on the opposite side, has been met.
    bool has_mirror = false;
};

} // namespace CallRecordingUtils

#endif
