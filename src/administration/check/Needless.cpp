// Takes what can go for both kinds of calls, and looks at the list without it.

#include "administration/check/Needless.h"

#include <algorithm>
#include <iterator>

namespace CallRecordingUtils {

NeedlessRules FindNeedless(RuleList const& rules, CallKind calls, std::size_t memory) {
    auto const find = [&](CallKind kind) {
        return RuleAnalysis(rules, memory, kind).FindNeedless();
    };
    std::vector<NeedlessRule> const here = find(calls);
    std::vector<NeedlessRule> const there = find(OtherThan(calls));
    NeedlessRules needless{{}, true};
    std::copy_if(here.begin(), here.end(), std::back_inserter(needless.rules),
                 [&there](NeedlessRule const& rule) {
                     return std::any_of(there.begin(), there.end(),
                                        [&rule](auto const& t) { return t.place == rule.place; });
                 });
    RuleList after = rules;
    for (auto rule = needless.rules.rbegin(); rule != needless.rules.rend(); ++rule)
        after.erase(after.begin() + static_cast<std::ptrdiff_t>(rule->place));
    for (CallKind const kind : {calls, OtherThan(calls)})
        needless.isProved = needless.isProved && Compare(rules, after, memory, kind).same == true;
    return needless;
}

} // namespace CallRecordingUtils
