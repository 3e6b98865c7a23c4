// The keys of the rule file. The exported table, tokensArray, is made from these.

#ifndef DATABASE_RULEKEYS_H
#define DATABASE_RULEKEYS_H

#include <array>

#include <callrecordingutils/tokensArray.h>

namespace CallRecordingUtils {

/// Indexed by RuleFileKeys.
inline constexpr std::array<char const*, RULE_FILE_KEY_COUNT> kRuleKeys{
    "callrecordingrule_id", "caller_pattern",      "caller_call_type", "called_pattern",
    "called_call_type",     "call_recording_type", "record_to",        "recording_duration",
    "recording_rule_state", "description"};

} // namespace CallRecordingUtils

#endif
