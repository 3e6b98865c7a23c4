// Finds twins.

#include "edit/Twins.h"

#include <algorithm>

#include <fmt/format.h>

#include "Failure.h"
#include "model/RuleSides.h"

namespace callrecordingctl {

std::size_t FindTwin(RuleList const& rules, std::size_t index) {
    Rule const& rule = rules[index];
    auto const twin = std::find_if(rules.begin(), rules.end(), [&rule](Rule const& other) {
        return CallRecordingUtils::AreTwins(rule, other);
    });
    if (CallRecordingUtils::MirrorsItself(rule) || twin == rules.end())
        throw Failure(kExitNoSuchRule,
                      fmt::format("no rule mirrors rule {}; without --twin it is edited alone",
                                  rule.callrecordingrule_id));
    return static_cast<std::size_t>(twin - rules.begin());
}

} // namespace callrecordingctl
