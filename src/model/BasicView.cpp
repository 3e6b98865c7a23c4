// Compares and merges rules for the basic view.

#include "model/BasicView.h"

#include <set>

#include "model/RuleSides.h"

namespace CallRecordingUtils {
namespace {

bool AreDirectEqual(CallRecordingRuleParams const& a, CallRecordingRuleParams const& b) {
    return SidesOf(a) == SidesOf(b) && HaveEqualSettings(a, b);
}

bool AreCrossedEqual(CallRecordingRuleParams const& a, CallRecordingRuleParams const& b) {
    return AreTwins(a, b) && HaveEqualSettings(a, b);
}

bool HasKey(CallRecordingRuleParams const& rule) {
    return rule.called_call_type == CALL_TYPE_NUMBER || rule.caller_call_type == CALL_TYPE_NUMBER;
}

/// REQUIRES: HasKey(rule).
std::string const& KeyOf(CallRecordingRuleParams const& rule) {
    return rule.called_call_type == CALL_TYPE_NUMBER ? rule.called_pattern : rule.caller_pattern;
}

bool IsBan(CallRecordingRuleParams const& rule) {
    return rule.recording_rule_state == RULE_ENABLED && ForbidsRecording(rule);
}

bool AcceptsEveryone(RuleSide const& side) {
    return side.type == CALL_TYPE_ANY && side.pattern == "*";
}

} // namespace

void MarkUnlessShowable(CallRecordingRuleMapParams& entry) {
    auto const [caller, called] = SidesOf(entry.params);
    bool const fitsCalled = called.type != CALL_TYPE_NUMBER || AcceptsEveryone(caller);
    bool const fitsCaller = caller.type != CALL_TYPE_NUMBER || AcceptsEveryone(called);
    if (!fitsCalled || !fitsCaller)
        entry.params.recording_rule_state = RULE_NOT_SHOWABLE;
}

// If several of the comparisons apply, the last one decides; they are not combined.
bool SaysTheSame(CallRecordingRuleParams const& rule, CallRecordingRuleMapParams& entry) {
    CallRecordingRuleParams const& listed = entry.params;
    bool same = false;
    if (rule.called_call_type == CALL_TYPE_NUMBER) {
        if (listed.called_call_type == CALL_TYPE_NUMBER)
            same = AreDirectEqual(rule, listed);
        if (listed.caller_call_type == CALL_TYPE_NUMBER) {
            entry.has_mirror = true;
            same = AreCrossedEqual(rule, listed);
        }
    }
    if (rule.caller_call_type == CALL_TYPE_NUMBER) {
        if (listed.caller_call_type == CALL_TYPE_NUMBER)
            same = AreDirectEqual(rule, listed);
        if (listed.called_call_type == CALL_TYPE_NUMBER) {
            entry.has_mirror = true;
            same = AreCrossedEqual(rule, listed);
        }
    }
    return same;
}

void BasicView::Add(CallRecordingRuleParams const& rule) {
    if (!HasKey(rule)) {
        hasAdvancedRules_ = true;
        return;
    }
    bool const keyedOnCalled = rule.called_call_type == CALL_TYPE_NUMBER;
    CallType const other = keyedOnCalled ? rule.caller_call_type : rule.called_call_type;
    if (other != CALL_TYPE_ANY)
        hasAdvancedRules_ = true;
    Merge(KeyOf(rule), rule);
}

void BasicView::Merge(std::string const& keyPattern, CallRecordingRuleParams const& rule) {
    auto const found = entries_.find(keyPattern);
    if (found == entries_.end()) {
        CallRecordingRuleMapParams entry{rule, false};
        MarkUnlessShowable(entry);
        entries_.emplace(keyPattern, entry);
        return;
    }
    CallRecordingRuleMapParams& entry = found->second;
    bool const showable = entry.params.recording_rule_state != RULE_NOT_SHOWABLE;
    if (showable && !SaysTheSame(rule, entry))
        entry.params.recording_rule_state = RULE_NOT_SHOWABLE;
}

std::vector<CallRecordingRuleParams> BasicView::Rules() const {
    std::vector<CallRecordingRuleParams> rules;
    for (auto const& [pattern, entry] : entries_) {
        rules.push_back(entry.params);
        if (!entry.has_mirror)
            rules.back().recording_rule_state = RULE_NOT_SHOWABLE;
    }
    return rules;
}

std::vector<std::size_t>
BansMissingFromBasicView(std::vector<CallRecordingRuleParams> const& rules) {
    BasicView view;
    for (CallRecordingRuleParams const& rule : rules)
        view.Add(rule);
    std::set<std::string> enforced;
    for (CallRecordingRuleParams const& rule : view.Rules())
        if (IsBan(rule))
            enforced.insert(KeyOf(rule));
    std::vector<std::size_t> missing;
    for (std::size_t place = 0; place < rules.size(); ++place)
        if (IsBan(rules[place]) &&
            (!HasKey(rules[place]) || enforced.count(KeyOf(rules[place])) == 0))
            missing.push_back(place);
    return missing;
}

} // namespace CallRecordingUtils
