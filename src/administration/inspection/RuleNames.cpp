// Puts the names of rules together.

#include "administration/inspection/RuleNames.h"

#include <fmt/format.h>

namespace CallRecordingUtils {

std::string RulesText(RuleList const& rules, std::vector<std::size_t> const& places) {
    constexpr std::size_t kMost = 8;
    std::size_t const shown = places.size() <= kMost ? places.size() : kMost - 1;
    std::string text = places.size() == 1 ? "rule " : "rules ";
    for (std::size_t i = 0; i < shown; ++i) {
        bool const isLast = i + 1 == places.size();
        text += fmt::format("{}{}",
                            i == 0   ? ""
                            : isLast ? " and "
                                     : ", ",
                            rules[places[i]].callrecordingrule_id);
    }
    return shown == places.size() ? text
                                  : fmt::format("{} and {} more", text, places.size() - shown);
}

std::string NameOf(Rule const& rule) {
    return fmt::format("rule {}{}", rule.callrecordingrule_id,
                       rule.description.empty() ? "" : fmt::format(" \"{}\"", rule.description));
}

} // namespace CallRecordingUtils
