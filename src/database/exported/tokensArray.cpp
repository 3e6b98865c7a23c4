// The exported table of the rule file's keys.

#include <callrecordingutils/tokensArray.h>

#include "database/RuleKeys.h"

namespace CallRecordingUtils {

char const* const tokensArray[RULE_FILE_KEY_COUNT] = {
    kRuleKeys[0], kRuleKeys[1], kRuleKeys[2], kRuleKeys[3], kRuleKeys[4],
    kRuleKeys[5], kRuleKeys[6], kRuleKeys[7], kRuleKeys[8], kRuleKeys[9]};

} // namespace CallRecordingUtils
