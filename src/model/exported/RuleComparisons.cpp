// The two comparisons of the basic view that the database exports.

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
