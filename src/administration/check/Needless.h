// Rules that can go without any call being decided differently.

#ifndef ADMINISTRATION_CHECK_NEEDLESS_H
#define ADMINISTRATION_CHECK_NEEDLESS_H

#include <cstddef>
#include <vector>

#include "analysis/RuleAnalysis.h"
#include "model/RuleList.h"

namespace CallRecordingUtils {

struct NeedlessRules {
    std::vector<NeedlessRule> rules; ///< In their order.
    /// Whether comparisons of the list before and after say that no call changes.
    bool isProved;
};

/// Rules that can go together, for typed calls and for parties. What takes their calls instead is
/// said for calls. memory is in bytes, for one kind of calls.
NeedlessRules FindNeedless(RuleList const& rules, CallKind calls, std::size_t memory);

} // namespace CallRecordingUtils

#endif
