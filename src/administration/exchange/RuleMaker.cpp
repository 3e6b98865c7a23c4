// Makes rules from records and collects everything that is wrong with them.

#include <cctype>
#include <limits>
#include <optional>

#include <fmt/format.h>

#include "administration/edit/SideFields.h"
#include "administration/exchange/ImportedRules.h"
#include "model/CallTypeNames.h"
#include "text/Printable.h"
#include "validation/SidePattern.h"

namespace CallRecordingUtils {
namespace {

std::string InSmallLetters(std::string text) {
    for (char& c : text)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

/// Makes a rule from a record and collects everything that is wrong with it.
class RuleMaker {
  public:
    explicit RuleMaker(RuleRecord const& record) : record_(record) {}

    ImportedRule Make() {
        made_.line = record_.line;
        TakeId();
        TakeSide("from", kCallerMembers, made_.rule.caller_pattern, made_.rule.caller_call_type);
        TakeSide("to", kCalledMembers, made_.rule.called_pattern, made_.rule.called_call_type);
        TakeText(RuleMember::RecordTo, made_.rule.record_to);
        TakeText(RuleMember::Duration, made_.rule.recording_duration);
        TakeText(RuleMember::Description, made_.rule.description);
        TakeRecordingType();
        TakeState();
        return made_;
    }

  private:
    using Value = RuleRecord::Value;

    Value const* Find(RuleMember member) const {
        auto const found = record_.values.find(member);
        return found != record_.values.end() ? &found->second : nullptr;
    }

    void Blame(Value const& value, std::string const& message) {
        made_.faults.push_back({value.line, fmt::format("{}: {}", value.name, message)});
    }

    /// The index of the text of value in texts, in which there are no capitals. Nothing, and a
    /// fault, if it is not there.
    std::optional<std::size_t> OneOf(Value const& value, std::vector<std::string> const& texts,
                                     char const* expected) {
        for (std::size_t i = 0; i < texts.size(); ++i)
            if (InSmallLetters(value.text) == texts[i])
                return i;
        Blame(value, fmt::format("\"{}\" is not {}", value.text, expected));
        return std::nullopt;
    }

    void TakeId() {
        Value const* const value = Find(RuleMember::Id);
        if (value == nullptr)
            return;
        std::string const& text = value->text;
        bool const isNumber = !text.empty() && text.size() <= 10 &&
                              text.find_first_not_of("0123456789") == std::string::npos;
        if (!isNumber || std::stoull(text) > std::numeric_limits<std::int32_t>::max())
            return Blame(*value, fmt::format("\"{}\" is no number from 0 to 2147483647", text));
        made_.rule.callrecordingrule_id = static_cast<std::int32_t>(std::stoull(text));
        made_.hasId = true;
    }

    std::optional<CallType> TypeOf(Value const* value) {
        if (value == nullptr)
            return std::nullopt;
        auto const type = ParseCallType(InSmallLetters(value->text));
        if (!type)
            Blame(*value, fmt::format("\"{}\" is no call type; it is number, sip, number2, any, or "
                                      "0 to 3",
                                      value->text));
        return type;
    }

    void TakeSide(char const* side, SideMembers const& members, std::string& pattern,
                  CallType& type) {
        std::size_t const faults = made_.faults.size();
        Value const* const named = Find(members.typeName);
        SideFields fields{std::nullopt, TypeOf(Find(members.type))};
        auto const byName = TypeOf(named);
        if (byName && fields.type && *byName != *fields.type)
            Blame(*named, fmt::format("says {}, and the number of the call type {}; leave one out",
                                      named->text, CallTypeName(*fields.type)));
        if (!fields.type)
            fields.type = byName;
        if (made_.faults.size() > faults)
            return;
        if (Value const* const stored = Find(members.pattern))
            TakeStored(*stored, Find(members.entry), fields, pattern, type);
        else
            TakeEntry(side, Find(members.entry), fields, pattern, type);
    }

    void TakeEntry(char const* side, Value const* value, SideFields& fields, std::string& pattern,
                   CallType& type) {
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

    void TakeText(RuleMember member, std::string& field) {
        constexpr std::size_t kMost = 65535;
        Value const* const value = Find(member);
        if (value == nullptr)
            return;
        using namespace std::string_view_literals;
        if (value->text.find_first_of("\r\n\0"sv) != std::string::npos)
            Blame(*value, "a line break or a byte of value 0 cannot be stored");
        else if (value->text.size() > kMost)
            Blame(*value,
                  fmt::format("{} bytes cannot be stored, at most {}", value->text.size(), kMost));
        field = value->text;
    }

    void TakeRecordingType() {
        Value const* const value = Find(RuleMember::RecordingType);
        if (value == nullptr)
            return;
        if (auto const type = OneOf(*value, {"0", "1"}, "0 or 1"))
            made_.rule.call_recording_type = static_cast<CallRecordingTypes>(*type);
    }

    /// There are several ways to say whether the rule is enabled; those that are there must agree.
    void TakeState() {
        std::optional<bool> isOn;
        auto const agree = [&](Value const& value, bool saysOn) {
            if (isOn && *isOn != saysOn)
                Blame(value, "contradicts another member that says whether the rule is enabled; "
                             "leave one out");
            isOn = saysOn;
        };
        if (Value const* const value = Find(RuleMember::Enabled))
            if (auto const at = OneOf(*value,
                                      {"true", "yes", "on", "1", "wahr", "ja", "false", "no", "off",
                                       "0", "falsch", "nein"},
                                      "yes or no, true or false, on or off, 1 or 0"))
                agree(*value, *at < 6);
        if (Value const* const value = Find(RuleMember::State))
            if (auto const at = OneOf(*value, {"0", "1"}, "0 (enabled) or 1 (disabled)"))
                agree(*value, *at == 0);
        if (Value const* const value = Find(RuleMember::StateName))
            if (auto const at = OneOf(*value, {"enabled", "disabled"}, "enabled or disabled"))
                agree(*value, *at == 0);
        made_.rule.recording_rule_state = isOn.value_or(true) ? RULE_ENABLED : RULE_DISABLED;
    }

    RuleRecord const& record_;
    ImportedRule made_;
};

} // namespace

ImportedRule RuleOf(RuleRecord const& record) {
    return RuleMaker(record).Make();
}

} // namespace CallRecordingUtils
