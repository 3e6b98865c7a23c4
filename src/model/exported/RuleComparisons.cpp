// The two comparisons that judge rules in basic view mode, as the database offers them.

#include <callrecordingutils/CCallRecordingDB.h>

#include "model/BasicView.h"

namespace CallRecordingUtils {

void CCallRecordingDB::VerifyBasicViewModeRuleValidation(CallRecordingRuleMapParams& entry) {
    MarkUnlessShowable(entry);
}

bool CCallRecordingDB::IsIdenticallRules(CallRecordingRuleParams const* rule,
                                         CallRecordingRuleMapParams& entry) {
    return rule != nullptr && SaysTheSame(*rule, entry);
}

} // namespace CallRecordingUtils
