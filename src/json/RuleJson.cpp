// Writes rules as JSON.

#include "json/RuleJson.h"

#include "model/CallTypeNames.h"
#include "validation/SidePattern.h"
#include "json/Bytes.h"
#include "json/Names.h"

namespace CallRecordingUtils {
namespace {

constexpr char const* kStateNames[] = {"enabled", "disabled", "not_showable"};

void AddSide(nlohmann::ordered_json& json, SideMembers const& side, std::string const& pattern,
             CallType type) {
    json[NameOf(side.pattern)] = ToUtf8(pattern);
    json[NameOf(side.entry)] = ToUtf8(ToEntry(pattern, type));
    json[NameOf(side.malformed)] = ExplainStored(pattern, type).has_value();
    json[NameOf(side.type)] = static_cast<int>(type);
    json[NameOf(side.typeName)] = CallTypeName(type);
}

void AddSettings(nlohmann::ordered_json& json, Rule const& rule) {
    json[NameOf(RuleMember::RecordingType)] = static_cast<int>(rule.call_recording_type);
    json[NameOf(RuleMember::RecordTo)] = ToUtf8(rule.record_to);
    json[NameOf(RuleMember::Duration)] = ToUtf8(rule.recording_duration);
    json[NameOf(RuleMember::Description)] = ToUtf8(rule.description);
}

} // namespace

nlohmann::ordered_json ToJson(Rule const& rule, std::size_t position, std::string const& digest) {
    nlohmann::ordered_json json;
    json[NameOf(RuleMember::Position)] = position;
    json[NameOf(RuleMember::Id)] = rule.callrecordingrule_id;
    AddSide(json, kCallerMembers, rule.caller_pattern, rule.caller_call_type);
    AddSide(json, kCalledMembers, rule.called_pattern, rule.called_call_type);
    AddSettings(json, rule);
    json[NameOf(RuleMember::State)] = rule.recording_rule_state;
    json[NameOf(RuleMember::StateName)] = kStateNames[rule.recording_rule_state];
    json[NameOf(RuleMember::Enabled)] = rule.recording_rule_state == RULE_ENABLED;
    if (!digest.empty()) {
        json[NameOf(RuleMember::FileState)] = digest.substr(0, 8);
        json[NameOf(RuleMember::FileDigest)] = digest;
    }
    return json;
}

nlohmann::ordered_json OutcomeToJson(Rule const& rule, std::size_t position) {
    nlohmann::ordered_json json;
    json[NameOf(RuleMember::Position)] = position;
    json[NameOf(RuleMember::Id)] = rule.callrecordingrule_id;
    AddSettings(json, rule);
    return json;
}

nlohmann::ordered_json ToJson(RuleList const& rules, std::vector<std::size_t> const& positions,
                              std::string const& digest) {
    auto document = nlohmann::ordered_json::array();
    for (std::size_t i = 0; i < rules.size(); ++i)
        document.push_back(ToJson(rules[i], positions[i], digest));
    return document;
}

} // namespace CallRecordingUtils
