// A rule in words and in JSON.

#include "output/RuleText.h"

#include <numeric>

#include <fmt/format.h>

#include "Failure.h"
#include "output/Table.h"

namespace callrecordingctl {

using namespace CallRecordingUtils;

char const* CallTypeName(CallType type) {
    return kCallTypeNames[type];
}

std::optional<CallType> ParseCallType(std::string const& text) {
    for (int type = CALL_TYPE_NUMBER; type <= CALL_TYPE_ANY; ++type)
        if (text == kCallTypeNames[type] || text == std::to_string(type))
            return static_cast<CallType>(type);
    return std::nullopt;
}

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

namespace {

constexpr char const* kStateNames[] = {"enabled", "disabled", "not_showable"};

void AddSide(nlohmann::ordered_json& json, std::string const& side, std::string const& pattern,
             CallType type) {
    json[side + "_pattern"] = pattern;
    json[side + "_pattern_entry"] = ToEntry(pattern, type);
    json[side + "_pattern_malformed"] = ExplainStored(pattern, type).has_value();
    json[side + "_call_type"] = static_cast<int>(type);
    json[side + "_call_type_name"] = CallTypeName(type);
}

} // namespace

std::string SidesText(Rule const& rule) {
    return fmt::format("from {} to {}", SideText(rule.caller_pattern, rule.caller_call_type),
                       SideText(rule.called_pattern, rule.called_call_type));
}

std::string NameOf(Rule const& rule) {
    return fmt::format("rule {}{}", rule.callrecordingrule_id,
                       rule.description.empty() ? "" : fmt::format(" \"{}\"", rule.description));
}

bool IsForEveryone(Rule const& rule) {
    auto const takesAll = [](std::string const& pattern, CallType type) {
        return type == CALL_TYPE_ANY && !pattern.empty() &&
               pattern.find_first_not_of('*') == std::string::npos;
    };
    return takesAll(rule.caller_pattern, rule.caller_call_type) &&
           takesAll(rule.called_pattern, rule.called_call_type);
}

std::vector<std::string> ListRow(Rule const& rule, std::size_t position) {
    return {std::to_string(position),
            std::to_string(rule.callrecordingrule_id),
            StateText(rule),
            SideText(rule.caller_pattern, rule.caller_call_type),
            SideText(rule.called_pattern, rule.called_call_type),
            std::to_string(rule.call_recording_type),
            rule.record_to,
            rule.recording_duration,
            rule.description};
}

std::vector<std::string> ListHeaders() {
    return {"#", "ID", "STATE", "FROM", "TO", "REC", "RECORD TO", "FOR", "DESCRIPTION"};
}

std::string CaretText(std::string const& entry, PatternProblem const& problem) {
    // What surrounds the place is enough of a pattern that would not fit on a line.
    constexpr std::size_t kMostBefore = 50;
    constexpr std::size_t kMost = 70;
    std::size_t const begin = problem.position > kMostBefore ? problem.position - kMostBefore : 0;
    std::string const left =
        (begin > 0 ? "..." : "") + entry.substr(begin, problem.position - begin);
    std::string const right = entry.substr(problem.position, begin + kMost - problem.position);
    bool const isCut = begin + kMost < entry.size();
    return fmt::format("    {}{}{}\n    {:{}}^", Printable(left), Printable(right),
                       isCut ? "..." : "", "", DisplayWidth(left));
}

nlohmann::ordered_json ToJson(Rule const& rule, std::size_t position, std::string const& state) {
    nlohmann::ordered_json json;
    json["position"] = position;
    json["callrecordingrule_id"] = rule.callrecordingrule_id;
    AddSide(json, "caller", rule.caller_pattern, rule.caller_call_type);
    AddSide(json, "called", rule.called_pattern, rule.called_call_type);
    json["call_recording_type"] = static_cast<int>(rule.call_recording_type);
    json["record_to"] = rule.record_to;
    json["recording_duration"] = rule.recording_duration;
    json["description"] = rule.description;
    json["recording_rule_state"] = rule.recording_rule_state;
    json["recording_rule_state_name"] = kStateNames[rule.recording_rule_state];
    json["enabled"] = rule.recording_rule_state == RULE_ENABLED;
    if (!state.empty())
        json["file_state"] = state;
    return json;
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

nlohmann::ordered_json RulesToJson(RuleList const& rules, std::vector<std::size_t> const& positions,
                                   std::string const& state) {
    auto document = nlohmann::ordered_json::array();
    for (std::size_t i = 0; i < rules.size(); ++i)
        document.push_back(ToJson(rules[i], positions[i], state));
    return document;
}

} // namespace

nlohmann::ordered_json ListToJson(RuleList const& rules, std::string const& state) {
    return RulesToJson(rules, AllPositions(rules), state);
}

void PrintRules(RuleList const& rules, std::vector<std::size_t> const& positions,
                std::string const& state, bool json) {
    if (json)
        return PrintJson(RulesToJson(rules, positions, state));
    Table table(ListHeaders(), 6, 3);
    table.MayGiveWay({"REC", "FOR", "STATE"});
    for (std::size_t i = 0; i < rules.size(); ++i)
        table.Add(ListRow(rules[i], positions[i]), StyleOf(rules[i]));
    if (rules.empty())
        Say("there are no rules");
    else
        table.Print();
    Say("the file is in state {}", state);
}

void PrintRules(RuleList const& rules, std::string const& state, bool json) {
    PrintRules(rules, AllPositions(rules), state, json);
}

void PrintJson(nlohmann::ordered_json const& document) {
    fmt::print("{}\n", document.dump(2, ' ', false, nlohmann::json::error_handler_t::replace));
}

} // namespace callrecordingctl
