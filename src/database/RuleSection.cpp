// Converts between entries and the fields of a rule.

#include "database/RuleSection.h"

#include <stdexcept>
#include <string_view>

#include "common/DecimalNumber.h"

namespace CallRecordingUtils {
namespace {

bool IsUsable(SmartBuffer const& buffer) {
    std::uint32_t const capacity = buffer.GetCapacity();
    return capacity != 0 && capacity != 0xFFFFFFFFU;
}

} // namespace

char const* SectionReader::Read(RuleFileKeys key) {
    file_.GetSectionEntry(kRuleKeys[key], buffer_.GetData(), buffer_.GetCapacity());
    return IsUsable(buffer_) ? buffer_.GetData() : nullptr;
}

void SectionReader::ReadText(RuleFileKeys key, std::string& field) {
    if (char const* const text = Read(key))
        field = text;
}

void SectionReader::ReadCallType(RuleFileKeys key, CallType& field) {
    char const* const value = Read(key);
    if (value == nullptr)
        return;
    std::string_view const text(value);
    if (text == "0")
        field = CALL_TYPE_NUMBER;
    else if (text == "1")
        field = CALL_TYPE_SIP;
    else if (text == "2")
        field = CALL_TYPE_NUMBER2;
    else
        field = CALL_TYPE_ANY;
}

void SectionReader::ReadRule(CallRecordingRuleParams& rule) {
    ReadText(KEY_CALLER_PATTERN, rule.caller_pattern);
    ReadCallType(KEY_CALLER_CALL_TYPE, rule.caller_call_type);
    ReadText(KEY_CALLED_PATTERN, rule.called_pattern);
    ReadCallType(KEY_CALLED_CALL_TYPE, rule.called_call_type);
    if (char const* const text = Read(KEY_CALL_RECORDING_TYPE))
        rule.call_recording_type =
            std::string_view(text) == "0" ? CALL_RECORDING_TYPE_0 : CALL_RECORDING_TYPE_1;
    ReadText(KEY_RECORD_TO, rule.record_to);
    ReadText(KEY_RECORDING_DURATION, rule.recording_duration);
    ReadText(KEY_DESCRIPTION, rule.description);
    if (char const* const text = Read(KEY_RECORDING_RULE_STATE))
        rule.recording_rule_state = text[0] == '1' ? RULE_ENABLED : RULE_DISABLED;
}

std::optional<std::int32_t> SectionReader::ReadId() {
    char const* const text = Read(KEY_CALLRECORDINGRULE_ID);
    return text != nullptr ? std::optional(ParseDecimal(text)) : std::nullopt;
}

SectionEntry StateEntry(bool enabled) {
    return {KEY_RECORDING_RULE_STATE, enabled ? "1" : "0"};
}

std::vector<SectionEntry> RecordingSettings(CallRecordingRuleParams const& rule) {
    return {{KEY_CALL_RECORDING_TYPE, std::to_string(rule.call_recording_type)},
            {KEY_RECORD_TO, rule.record_to},
            {KEY_RECORDING_DURATION, rule.recording_duration},
            StateEntry(rule.recording_rule_state == RULE_ENABLED)};
}

std::vector<SectionEntry> RuleEntries(CallRecordingRuleParams const& rule) {
    return {{KEY_CALLRECORDINGRULE_ID, std::to_string(rule.callrecordingrule_id)},
            {KEY_CALLER_PATTERN, rule.caller_pattern},
            {KEY_CALLER_CALL_TYPE, std::to_string(rule.caller_call_type)},
            {KEY_CALLED_PATTERN, rule.called_pattern},
            {KEY_CALLED_CALL_TYPE, std::to_string(rule.called_call_type)},
            {KEY_CALL_RECORDING_TYPE, std::to_string(rule.call_recording_type)},
            {KEY_RECORD_TO, rule.record_to},
            {KEY_RECORDING_DURATION, rule.recording_duration},
            {KEY_DESCRIPTION, rule.description},
            StateEntry(rule.recording_rule_state == RULE_ENABLED)};
}

void SetEntries(Configuration::MultiSectionFile& file, std::vector<SectionEntry> const& entries) {
    for (SectionEntry const& entry : entries)
        if (entry.text.find('\0') != std::string::npos)
            throw std::invalid_argument("the new value of \"" + std::string(kRuleKeys[entry.key]) +
                                        "\" contains a NUL");
    for (SectionEntry const& entry : entries)
        file.SetSectionEntry(kRuleKeys[entry.key], entry.text.c_str());
}

} // namespace CallRecordingUtils
