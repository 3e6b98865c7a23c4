// A rule in words and in JSON.

#include "output/RuleText.h"

#include <numeric>

#include <fmt/format.h>

#include "Failure.h"
#include "administration/inspection/Digest.h"
#include "analysis/Everyone.h"
#include "matching/PatternMatcher.h"
#include "model/CallTypeNames.h"
#include "model/RuleSides.h"
#include "output/Table.h"

namespace callrecordingctl {

char const* StateText(Rule const& rule) {
    switch (rule.recording_rule_state) {
    case RULE_ENABLED: return "on";
    case RULE_DISABLED: return "off";
    default: return "adv";
    }
}

std::string SideText(std::string const& stored, CallType type) {
    if (stored.empty())
        return fmt::format("{} (empty)", CallTypeName(type));
    return fmt::format("{} {}{}", CallTypeName(type), ToEntry(stored, type),
                       ExplainStored(stored, type) ? " (malformed)" : "");
}

std::string SidesText(Rule const& rule) {
    return fmt::format("from {} to {}", SideText(rule.caller_pattern, rule.caller_call_type),
                       SideText(rule.called_pattern, rule.called_call_type));
}

bool IsForEveryone(Rule const& rule) {
    return TakesEveryone(SidesOf(rule));
}

char const* EveryoneText(Rule const& rule) {
    bool const takesEmpty = PatternMatcher("", rule.caller_pattern).Matches() &&
                            PatternMatcher("", rule.called_pattern).Matches();
    return takesEmpty ? "every call" : "every call that has an address on both sides";
}

std::string RecordToText(Rule const& rule) {
    return ForbidsRecording(rule) ? rule.record_to + " (forbids recording)" : rule.record_to;
}

std::vector<std::string> ListRow(Rule const& rule, std::size_t position) {
    return {std::to_string(position),
            std::to_string(rule.callrecordingrule_id),
            StateText(rule),
            SideText(rule.caller_pattern, rule.caller_call_type),
            SideText(rule.called_pattern, rule.called_call_type),
            std::to_string(rule.call_recording_type),
            RecordToText(rule),
            rule.recording_duration,
            rule.description};
}

std::vector<std::string> ListHeaders() {
    return {"#", "ID", "STATE", "FROM", "TO", "REC", "RECORD TO", "FOR", "DESCRIPTION"};
}

namespace {

std::vector<std::size_t> AllPositions(RuleList const& rules) {
    std::vector<std::size_t> positions(rules.size());
    std::iota(positions.begin(), positions.end(), 1);
    return positions;
}

RowStyle StyleOf(Rule const& rule) {
    if (ExplainStored(rule.caller_pattern, rule.caller_call_type) ||
        ExplainStored(rule.called_pattern, rule.called_call_type))
        return RowStyle::Alarm;
    return rule.recording_rule_state == RULE_ENABLED ? RowStyle::Plain : RowStyle::Pale;
}

} // namespace

nlohmann::ordered_json ListToJson(RuleList const& rules, std::string const& digest) {
    return ToJson(rules, AllPositions(rules), digest);
}

void PrintRules(RuleList const& rules, std::vector<std::size_t> const& positions,
                std::string const& digest, bool json, bool isNow) {
    if (json)
        return PrintJson(ToJson(rules, positions, digest));
    Table table(ListHeaders(), 6, 3);
    table.MayGiveWay({"REC", "FOR", "STATE"});
    for (std::size_t i = 0; i < rules.size(); ++i)
        table.Add(ListRow(rules[i], positions[i]), StyleOf(rules[i]));
    if (rules.empty())
        Say("there are no rules");
    else
        table.Print();
    Say("the file {} in state {}", isNow ? "is" : "then was", StateToken(digest));
}

void PrintRules(RuleList const& rules, std::string const& digest, bool json, bool isNow) {
    PrintRules(rules, AllPositions(rules), digest, json, isNow);
}

void PrintJson(nlohmann::ordered_json const& document) {
    fmt::print("{}\n", document.dump(2, ' ', false, nlohmann::json::error_handler_t::replace));
}

} // namespace callrecordingctl
