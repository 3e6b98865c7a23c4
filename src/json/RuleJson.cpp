// Writes rules as JSON.

#include "json/RuleJson.h"

#include "model/CallTypeNames.h"
#include "validation/SidePattern.h"

namespace CallRecordingUtils {
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

nlohmann::ordered_json ToJson(RuleList const& rules, std::vector<std::size_t> const& positions,
                              std::string const& state) {
    auto document = nlohmann::ordered_json::array();
    for (std::size_t i = 0; i < rules.size(); ++i)
        document.push_back(ToJson(rules[i], positions[i], state));
    return document;
}

} // namespace CallRecordingUtils
