// Writes and reads rules and states.

#include "records/report/RuleValues.h"

#include <algorithm>
#include <stdexcept>

#include "records/report/StateValues.h"

namespace CallRecordingUtils {
namespace {

using nlohmann::json;

json Put(Rule const& rule) {
    return {rule.callrecordingrule_id,   ToUtf8(rule.caller_pattern),     rule.caller_call_type,
            ToUtf8(rule.called_pattern), rule.called_call_type,           rule.call_recording_type,
            ToUtf8(rule.record_to),      ToUtf8(rule.recording_duration), ToUtf8(rule.description),
            rule.recording_rule_state};
}

Rule GetRule(json const& state) {
    Rule rule;
    rule.callrecordingrule_id = state.at(0);
    rule.caller_pattern = GetText(state.at(1));
    rule.caller_call_type = state.at(2);
    rule.called_pattern = GetText(state.at(3));
    rule.called_call_type = state.at(4);
    rule.call_recording_type = state.at(5);
    rule.record_to = GetText(state.at(6));
    rule.recording_duration = GetText(state.at(7));
    rule.description = GetText(state.at(8));
    rule.recording_rule_state = state.at(9);
    return rule;
}

json PutEnd(std::optional<Moment> const& moment) {
    return moment ? Put(*moment) : json();
}

std::optional<Moment> GetEnd(json const& state) {
    return state.is_null() ? std::nullopt : std::optional(GetMoment(state));
}

/// How many of the first forms stay, how many of the last ones, and those in between.
json PutForms(std::vector<Form> const& forms, std::vector<Form> const& before) {
    auto const head = std::mismatch(forms.begin(), forms.end(), before.begin(), before.end()).first;
    auto const most = std::min(forms.end() - head,
                               static_cast<std::ptrdiff_t>(before.size()) - (head - forms.begin()));
    auto const tail = std::mismatch(forms.rbegin(), forms.rbegin() + most, before.rbegin()).first;
    return {head - forms.begin(), tail - forms.rbegin(), std::vector<Form>(head, tail.base())};
}

std::vector<Form> GetForms(json const& state, std::vector<Form> const& before, std::size_t count) {
    std::size_t const head = state.at(0);
    std::size_t const tail = state.at(1);
    if (head > before.size() || tail > before.size() - head)
        throw std::runtime_error("a state of the rules does not follow from the one before it");
    auto const kept = [](std::size_t size) { return static_cast<std::ptrdiff_t>(size); };
    std::vector<Form> forms(before.begin(), before.begin() + kept(head));
    for (json const& form : state.at(2)) {
        forms.push_back(form);
        if (forms.back() >= count)
            throw std::runtime_error("a state has rules that are not there");
    }
    forms.insert(forms.end(), before.end() - kept(tail), before.end());
    return forms;
}

} // namespace

json PutRules(RuleList const& rules) {
    json state = json::array();
    for (Rule const& rule : rules)
        state.push_back(Put(rule));
    return state;
}

RuleList GetRules(json const& state) {
    RuleList rules;
    for (json const& rule : state)
        rules.push_back(GetRule(rule));
    return rules;
}

json Put(Moment const& moment) {
    return {moment.instant, moment.shown};
}

Moment GetMoment(json const& state) {
    return {state.at(0), state.at(1)};
}

json PutEras(std::map<std::size_t, EraFacts> const& eras) {
    json state = json::array();
    std::vector<Form> const none;
    std::vector<Form> const* before = &none;
    for (auto const& [index, era] : eras) {
        state.push_back({index, PutEnd(era.from), PutEnd(era.to), era.digest, ToUtf8(era.problem),
                         PutForms(era.forms, *before)});
        before = &era.forms;
    }
    return state;
}

std::map<std::size_t, EraFacts> GetEras(json const& state, std::size_t forms) {
    constexpr std::size_t kMostRules = std::size_t{1} << 28; // Of all states: no history has more.
    std::map<std::size_t, EraFacts> eras;
    std::vector<Form> const none;
    std::vector<Form> const* before = &none;
    std::size_t sum = 0;
    for (json const& put : state) {
        EraFacts& era = eras[put.at(0)];
        era = {GetEnd(put.at(1)), GetEnd(put.at(2)), put.at(3), GetText(put.at(4)),
               GetForms(put.at(5), *before, forms)};
        if (!era.from || (sum += era.forms.size()) > kMostRules)
            throw std::runtime_error("no history has such states");
        before = &era.forms;
    }
    return eras;
}

} // namespace CallRecordingUtils
