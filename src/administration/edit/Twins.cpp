// Finds the twin of a rule.

#include "administration/edit/Twins.h"

#include <algorithm>

#include <fmt/format.h>

#include "common/Error.h"
#include "model/RuleSides.h"

namespace CallRecordingUtils {

std::size_t FindTwin(RuleList const& rules, std::size_t index) {
    Rule const& rule = rules[index];
    auto const twin = std::find_if(rules.begin(), rules.end(),
                                   [&rule](Rule const& other) { return AreTwins(rule, other); });
    if (MirrorsItself(rule) || twin == rules.end())
        throw Error(Error::Kind::NoSuchRule,
                    fmt::format("no rule mirrors rule {}; without --twin it is edited alone",
                                rule.callrecordingrule_id));
    return static_cast<std::size_t>(twin - rules.begin());
}

} // namespace CallRecordingUtils
