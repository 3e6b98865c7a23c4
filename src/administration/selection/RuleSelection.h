// Which rules of a list people mean: by identifier, position or range, and by filters.

#ifndef ADMINISTRATION_SELECTION_RULESELECTION_H
#define ADMINISTRATION_SELECTION_RULESELECTION_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "model/RuleList.h"

namespace CallRecordingUtils {

/// How people name a rule: by its identifier, or as #5 by its position.
struct RuleName {
    std::int32_t number = 0;
    bool isPosition = false;
};

/// The place of the rule with this name. Throws an Error when there is no such rule, or more than
/// one.
std::size_t FindRule(RuleList const& rules, RuleName name);

/// One rule, or those from one name to another of the same kind. What a range names and the list
/// lacks is passed over.
struct RuleRange {
    RuleName first;
    std::optional<std::int32_t> last{}; ///< Of a range.
};

/// What is asked of a rule. What is not set lets every rule pass.
struct RuleFilter {
    std::optional<std::string> text; ///< Capitals make no difference in ASCII.
    std::optional<std::string> from; ///< The address of a party that the side takes.
    std::optional<std::string> to;
    std::optional<std::string> recordTo; ///< The whole destination.
    std::optional<bool> isEnabled;

    bool IsGiven() const { return text || from || to || recordTo || isEnabled; }
};

struct RuleSelection {
    std::vector<RuleRange> names; ///< Of which the filter takes some; without names, of all rules.
    RuleFilter filter;

    bool IsGiven() const { return !names.empty() || filter.IsGiven(); }
};

/// The places of the selected rules, each once, in the order of the names. There may be none that
/// passes the filter. Throws an Error when a single rule is named that FindRule does not find, or a
/// range in which there is none.
std::vector<std::size_t> Matching(RuleList const& rules, RuleSelection const& selection);

/// Says that Matching found none.
std::string NoneMatches(RuleList const& rules, RuleSelection const& selection);

/// The same as Matching, but throws an Error when there is none.
std::vector<std::size_t> Select(RuleList const& rules, RuleSelection const& selection);

/// Whether rule has text in its patterns, its destination or its description.
bool Mentions(Rule const& rule, std::string const& text);

/// The places of the rules that do not mention the address text, but have a side that takes it as a
/// party; none when text is no address that a call could have.
std::vector<std::size_t> MerelyTaking(RuleList const& rules, std::string const& text);

} // namespace CallRecordingUtils

#endif
