// Finds rules again that other states had.

#include "records/report/RuleForms.h"

#include <algorithm>
#include <functional>
#include <string>
#include <tuple>

namespace CallRecordingUtils {
namespace {

/// Rules that are equal in this have the same form.
auto Identity(Rule const& rule) {
    return std::tie(rule.callrecordingrule_id, rule.caller_pattern, rule.caller_call_type,
                    rule.called_pattern, rule.called_call_type, rule.call_recording_type,
                    rule.record_to, rule.recording_duration, rule.description,
                    rule.recording_rule_state);
}

/// Of what tells most rules apart.
std::size_t HashOf(Rule const& rule) {
    constexpr std::size_t kOdd = 0x9E3779B1;
    std::hash<std::string> const hash;
    std::size_t sum = static_cast<std::size_t>(rule.callrecordingrule_id);
    for (std::string const* const text :
         {&rule.caller_pattern, &rule.called_pattern, &rule.record_to, &rule.description})
        sum = sum * kOdd + hash(*text);
    return sum;
}

} // namespace

Form RuleForms::Add(Rule const& rule) {
    rules_.push_back(rule);
    links_.emplace_back();
    return static_cast<Form>(rules_.size() - 1);
}

Form RuleForms::FirstOf(Rule const& rule) {
    std::size_t const hash = HashOf(rule);
    auto const [begin, end] = firsts_.equal_range(hash);
    auto const known = std::find_if(begin, end, [&](auto const& entry) {
        return Identity(rules_[entry.second]) == Identity(rule);
    });
    return known != end ? known->second : firsts_.emplace(hash, Add(rule))->second;
}

Form RuleForms::FormOf(Rule const& rule) {
    Form const first = FirstOf(rule);
    if (links_[first].state != states_) {
        links_[first].state = states_;
        return links_[first].taken = first;
    }
    Form const before = links_[first].taken; // The state has this rule twice.
    if (!links_[before].next) {
        Form const added = Add(rule);
        links_[before].next = added;
    }
    return links_[first].taken = *links_[before].next;
}

std::vector<Form> RuleForms::Take(RuleList const& rules) {
    ++states_;
    std::vector<Form> forms(rules.size());
    std::transform(rules.begin(), rules.end(), forms.begin(),
                   [this](Rule const& rule) { return FormOf(rule); });
    return forms;
}

RuleList RuleForms::ListOf(std::vector<Form> const& forms) const {
    RuleList rules;
    rules.reserve(forms.size());
    for (Form const form : forms)
        rules.push_back(rules_[form]);
    return rules;
}

} // namespace CallRecordingUtils
