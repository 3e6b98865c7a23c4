/// @file
/// The keys of the rule file.

#ifndef CALLRECORDINGUTILS_TOKENSARRAY_H
#define CALLRECORDINGUTILS_TOKENSARRAY_H

#include <callrecordingutils/Export.h>

namespace CallRecordingUtils {

/// The index of each key in tokensArray.
enum RuleFileKeys {
    KEY_CALLRECORDINGRULE_ID = 0,
    KEY_CALLER_PATTERN = 1,
    KEY_CALLER_CALL_TYPE = 2,
    KEY_CALLED_PATTERN = 3,
    KEY_CALLED_CALL_TYPE = 4,
    KEY_CALL_RECORDING_TYPE = 5,
    KEY_RECORD_TO = 6,
    KEY_RECORDING_DURATION = 7,
    KEY_RECORDING_RULE_STATE = 8,
    KEY_DESCRIPTION = 9,
    RULE_FILE_KEY_COUNT = 10
};

/// The ten keys of a rule in its section of the rule file. Each is the name of the field of
/// CallRecordingRuleParams whose value it has. The table never changes.
CALLRECORDINGUTILS_EXPORT extern char const* const tokensArray[RULE_FILE_KEY_COUNT];

} // namespace CallRecordingUtils

#endif
