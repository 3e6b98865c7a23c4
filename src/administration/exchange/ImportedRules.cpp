// Makes rules of records, and gathers everything that is wrong with them.

#include "administration/exchange/ImportedRules.h"

#include <limits>

#include <fmt/format.h>

#include "administration/edit/SideFields.h"
#include "administration/inspection/ReadRules.h"
#include "common/MemoryFile.h"
#include "model/CallTypeNames.h"
#include "text/Printable.h"
#include "validation/SidePattern.h"

namespace CallRecordingUtils {
namespace {

class RuleMaker {
  public:
    explicit RuleMaker(RuleRecord const& record) : record_(record) {}

    ImportedRule Make() {
        made_.line = record_.line;
        TakeId();
        TakeSide("from", made_.rule.caller_pattern, made_.rule.caller_call_type);
        TakeSide("to", made_.rule.called_pattern, made_.rule.called_call_type);
        TakeText("record_to", made_.rule.record_to);
        TakeText("duration", made_.rule.recording_duration);
        TakeText("description", made_.rule.description);
        TakeRecordingType();
        TakeState();
        return made_;
    }

  private:
    using Value = RuleRecord::Value;

    Value const* Find(std::string const& name) const {
        auto const found = record_.values.find(name);
        return found != record_.values.end() ? &found->second : nullptr;
    }

    void Blame(Value const& value, std::string const& message) {
        made_.faults.push_back({value.line, fmt::format("{}: {}", value.name, message)});
    }

    /// The position of the text of value among texts; nothing, and a fault, when it is none.
    std::optional<std::size_t> OneOf(Value const& value, std::vector<std::string> const& texts,
                                     char const* expected) {
        for (std::size_t i = 0; i < texts.size(); ++i)
            if (value.text == texts[i])
                return i;
        Blame(value, fmt::format("\"{}\" is not {}", value.text, expected));
        return std::nullopt;
    }

    void TakeId() {
        Value const* const value = Find("id");
        if (value == nullptr)
            return;
        std::string const& text = value->text;
        bool const isNumber = !text.empty() && text.size() <= 10 &&
                              text.find_first_not_of("0123456789") == std::string::npos;
        if (!isNumber || std::stoull(text) > std::numeric_limits<std::int32_t>::max())
            return Blame(*value, fmt::format("\"{}\" is no number from 0 to 2147483647", text));
        made_.rule.callrecordingrule_id = static_cast<std::int32_t>(std::stoull(text));
    }

    std::optional<CallType> TypeOf(Value const* value) {
        if (value == nullptr)
            return std::nullopt;
        auto const type = ParseCallType(value->text);
        if (!type)
            Blame(*value, fmt::format("\"{}\" is no call type; it is number, sip, number2, any, or "
                                      "0 to 3",
                                      value->text));
        return type;
    }

    void TakeSide(std::string const& side, std::string& pattern, CallType& type) {
        std::size_t const faults = made_.faults.size();
        Value const* const named = Find(side + "_type_name");
        SideFields fields{std::nullopt, TypeOf(Find(side + "_type"))};
        auto const byName = TypeOf(named);
        if (byName && fields.type && *byName != *fields.type)
            Blame(*named, fmt::format("says {}, and the number of the call type {}; leave one out",
                                      named->text, CallTypeName(*fields.type)));
        if (!fields.type)
            fields.type = byName;
        if (made_.faults.size() > faults)
            return;
        if (Value const* const stored = Find(side + "_stored"))
            TakeStored(*stored, Find(side), fields, pattern, type);
        else
            TakeEntry(side, fields, pattern, type);
    }

    void TakeEntry(std::string const& side, SideFields& fields, std::string& pattern,
                   CallType& type) {
        Value const* const value = Find(side);
        if (value != nullptr)
            fields.pattern = value->text;
        Complete(fields);
        if (auto const fault = SetSide(fields, pattern, type)) {
            pattern = fields.pattern.value_or("");
            made_.faults.push_back(
                {value != nullptr ? value->line : record_.line,
                 fmt::format("{}: {}", value != nullptr ? value->name : side, *fault)});
        }
    }

    void TakeStored(Value const& stored, Value const* entry, SideFields const& fields,
                    std::string& pattern, CallType& type) {
        pattern = stored.text;
        type = fields.type.value_or(CALL_TYPE_NUMBER);
        std::string const asEntry = ToEntry(pattern, type);
        if (!fields.type)
            Blame(stored, "the call type is missing");
        else if (entry != nullptr && entry->text != asEntry)
            Blame(*entry, fmt::format("is not the entry form of {}, \"{}\"; leave one of them out",
                                      stored.name, pattern));
        else if (pattern.empty())
            Blame(stored, "an empty pattern never matches; write * for every call");
        else if (auto const problem = ExplainStored(pattern, type))
            Blame(stored,
                  fmt::format("malformed pattern of call type {}: {}\n{}", CallTypeName(type),
                              problem->message, CaretText(asEntry, problem->position)));
    }

    void TakeText(char const* name, std::string& field) {
        constexpr std::size_t kMost = 65535;
        Value const* const value = Find(name);
        if (value == nullptr)
            return;
        using namespace std::string_view_literals;
        if (value->text.find_first_of("\r\n\0"sv) != std::string::npos)
            Blame(*value, "a line break or a byte of value 0 cannot be stored");
        else if (value->text.size() > kMost)
            Blame(*value, fmt::format("{} characters cannot be stored, at most {}",
                                      value->text.size(), kMost));
        field = value->text;
    }

    void TakeRecordingType() {
        Value const* const value = Find("recording_type");
        if (value == nullptr)
            return;
        if (auto const type = OneOf(*value, {"0", "1"}, "0 or 1"))
            made_.rule.call_recording_type = static_cast<CallRecordingTypes>(*type);
    }

    /// Whether the rule is on, by each of the ways to say so; all that are there must agree.
    void TakeState() {
        std::optional<bool> isOn;
        auto const agree = [&](Value const& value, bool saysOn) {
            if (isOn && *isOn != saysOn)
                Blame(value,
                      "contradicts what else says whether the rule is enabled; leave one out");
            isOn = saysOn;
        };
        if (Value const* const value = Find("enabled"))
            if (auto const at = OneOf(*value, {"true", "yes", "on", "1", "false", "no", "off", "0"},
                                      "yes or no, true or false, on or off, 1 or 0"))
                agree(*value, *at < 4);
        if (Value const* const value = Find("state"))
            if (auto const at = OneOf(*value, {"0", "1"}, "0 (enabled) or 1 (disabled)"))
                agree(*value, *at == 0);
        if (Value const* const value = Find("state_name"))
            if (auto const at = OneOf(*value, {"enabled", "disabled"}, "enabled or disabled"))
                agree(*value, *at == 0);
        made_.rule.recording_rule_state = isOn.value_or(true) ? RULE_ENABLED : RULE_DISABLED;
    }

    RuleRecord const& record_;
    ImportedRule made_;
};

bool IsJson(std::string const& text) {
    std::size_t const first = text.find_first_not_of(" \t\r\n");
    return first != std::string::npos && (text[first] == '[' || text[first] == '{');
}

} // namespace

std::vector<ImportedRule> ReadImport(std::string const& path, std::vector<ImportFault>& faults) {
    std::string const text = ReadInput(path);
    RuleRecords const read =
        IsJson(text) ? ReadJsonRules(text) : ReadCsvRules(MemoryFile(text).Path());
    faults = read.faults;
    std::vector<ImportedRule> rules;
    for (RuleRecord const& record : read.records)
        rules.push_back(RuleMaker(record).Make());
    return rules;
}

} // namespace CallRecordingUtils
