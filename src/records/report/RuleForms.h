// All forms that rules had in the states of a rule file.

#ifndef RECORDS_REPORT_RULEFORMS_H
#define RECORDS_REPORT_RULEFORMS_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <unordered_map>
#include <vector>

#include "model/RuleList.h"

namespace CallRecordingUtils {

/// Which form a rule has. Rules that are equal in everything, also in their identifiers, have the
/// same one, in different states; those of one state have different ones each, even if they are
/// equal.
using Form = std::uint32_t;

/// Keeps each form once, for states that have most of their rules in common.
class RuleForms {
  public:
    /// The forms of the rules of a state, in their order.
    std::vector<Form> Take(RuleList const& rules);

    RuleList const& Rules() const { return rules_; } ///< By their forms.
    RuleList ListOf(std::vector<Form> const& forms) const;

  private:
    /// What else there is to a form.
    struct Link {
        std::optional<Form> next; // The next one of equal rules.
        Form taken = 0;           // Of the first one: the last that was taken, for this state.
        std::size_t state = 0;
    };

    Form FirstOf(Rule const& rule);
    Form FormOf(Rule const& rule);
    Form Add(Rule const& rule);

    RuleList rules_;
    std::vector<Link> links_;
    std::unordered_multimap<std::size_t, Form> firsts_; // The first of equal ones, by their hash.
    std::size_t states_ = 0;
};

} // namespace CallRecordingUtils

#endif
