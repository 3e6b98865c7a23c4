// Makes rules from records and collects everything that is wrong with them.

#include "administration/exchange/ImportedRules.h"

#include <limits>
#include <set>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include <fmt/format.h>

#include "administration/edit/Origins.h"
#include "administration/edit/SideFields.h"
#include "administration/inspection/ReadRules.h"
#include "common/Error.h"
#include "model/CallTypeNames.h"
#include "model/RuleSides.h"
#include "text/Printable.h"
#include "validation/SidePattern.h"

namespace CallRecordingUtils {
namespace {

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

    /// The index of the text of value in texts. Nothing, and a fault, if it is not there.
    std::optional<std::size_t> OneOf(Value const& value, std::vector<std::string> const& texts,
                                     char const* expected) {
        for (std::size_t i = 0; i < texts.size(); ++i)
            if (value.text == texts[i])
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
        auto const type = ParseCallType(value->text);
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
            if (auto const at = OneOf(*value, {"true", "yes", "on", "1", "false", "no", "off", "0"},
                                      "yes or no, true or false, on or off, 1 or 0"))
                agree(*value, *at < 4);
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

/// The first line of text that is neither blank nor a comment of a rule file, without blanks around
/// it; text gets what follows.
std::string_view NextLine(std::string_view& text) {
    while (!text.empty()) {
        std::size_t const end = std::min(text.find('\n'), text.size() - 1) + 1;
        std::string_view line = text.substr(0, end);
        text.remove_prefix(end);
        std::size_t const first = line.find_first_not_of(" \t\r\n");
        if (first == std::string_view::npos || line[first] == '#')
            continue;
        line.remove_prefix(first);
        return line.substr(0, line.find_last_not_of(" \t\r\n") + 1);
    }
    return {};
}

/// A line "{" begins a section of a rule file, and as well an object of JSON, where a name in
/// quotes follows.
ImportFormat FormatOf(std::string_view text) {
    std::size_t const first = text.find_first_not_of(" \t\r\n");
    std::string_view rest = text;
    std::string_view const line = NextLine(rest);
    std::string_view const next = NextLine(rest);
    bool const isComment = first != std::string_view::npos && text[first] == '#';
    if (line == "{" ? next.substr(0, 1) != "\"" : isComment && line.empty())
        return ImportFormat::RuleFile;
    return line.substr(0, 1) == "[" || line.substr(0, 1) == "{" ? ImportFormat::Json
                                                                : ImportFormat::Csv;
}

RuleRecords ReadRecords(ImportFile const& file, std::string const& name) {
    switch (file.format) {
    case ImportFormat::Json: return ReadJsonRules(file.text);
    case ImportFormat::RuleFile: return ReadRuleFileRules(file.text, name);
    case ImportFormat::Csv: break;
    }
    return ReadCsvRules(file.text);
}

/// Of a rule file the rules count as the library reads them; entries that say something else are
/// faults, which "check" explains.
void TakeAsRead(RuleList const& read, std::vector<ImportedRule>& imported) {
    for (std::size_t i = 0; i < imported.size(); ++i) {
        ImportedRule& rule = imported[i];
        if (rule.faults.empty() && !AreEqual(rule.rule, read[i]))
            rule.faults.push_back({rule.line, "an entry is missing or has a value that reads as "
                                              "something else; \"callrecordingctl check\" of this "
                                              "file says which"});
        rule.rule = read[i];
    }
}

} // namespace

ImportFile ReadImport(std::string const& text, std::string const& name) {
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    bool const isMarked = text.compare(0, kByteOrderMark.size(), kByteOrderMark) == 0;
    std::string const unmarked = isMarked ? text.substr(kByteOrderMark.size()) : text;
    ImportFormat const format = FormatOf(unmarked);
    // Of a rule file nothing is passed over, as its bytes are kept; with a mark it is malformed.
    ImportFile file{format == ImportFormat::RuleFile ? text : unmarked, format};
    RuleRecords read = ReadRecords(file, name);
    file.faults = std::move(read.faults);
    file.records = std::move(read.records);
    for (RuleRecord const& record : file.records)
        file.rules.push_back(RuleMaker(record).Make());
    if (file.format == ImportFormat::RuleFile)
        TakeAsRead(RulesOf(file.text, name), file.rules);
    return file;
}

void KeepPresent(RuleList const& before, ImportFile& file) {
    auto const keyOf = [&file](Rule const& rule) {
        if (file.format == ImportFormat::RuleFile)
            return AllFields(rule);
        return (file.format == ImportFormat::Json ? JsonRecordOf(rule) : CsvRecordOf(rule))
            .AllFields();
    };
    std::unordered_set<std::string> all;
    for (Rule const& rule : before)
        all.insert(AllFields(rule));
    // Rules with the same key are found in their order.
    std::unordered_map<std::string, std::vector<Rule const*>> present;
    for (auto rule = before.rbegin(); rule != before.rend(); ++rule)
        present[keyOf(*rule)].push_back(&*rule);
    for (std::size_t i = 0; i < file.rules.size(); ++i) {
        ImportedRule& imported = file.rules[i];
        auto const found =
            present.find(file.format == ImportFormat::RuleFile ? AllFields(imported.rule)
                                                               : file.records[i].AllFields());
        if (found == present.end() || found->second.empty()) {
            imported.isPresent = all.count(AllFields(imported.rule)) > 0;
            continue;
        }
        imported = {*found->second.back(), true, true, imported.line};
        found->second.pop_back();
    }
}

namespace {

std::string AllButId(Rule rule) {
    rule.callrecordingrule_id = 0;
    return AllFields(rule);
}

/// Gives out identifiers to rules that have none.
class Ids {
  public:
    Ids(RuleList const& before, std::vector<ImportedRule> const& imported, bool replaces) {
        std::set<std::int32_t> taken;
        for (ImportedRule const& rule : imported)
            if (replaces && rule.hasId)
                Pass(*taken.insert(rule.rule.callrecordingrule_id).first);
        for (Rule const& rule : before) {
            Pass(rule.callrecordingrule_id);
            if (replaces && taken.count(rule.callrecordingrule_id) == 0)
                free_.emplace(AllButId(rule), rule.callrecordingrule_id);
        }
    }

    std::int32_t For(Rule const& rule) {
        auto const found = free_.find(AllButId(rule));
        if (found != free_.end()) {
            std::int32_t const id = found->second;
            free_.erase(found);
            return id;
        }
        if (next_ > std::numeric_limits<std::int32_t>::max())
            throw Error(Error::Kind::Unsaved,
                        "no identifier is left after 2147483647; \"callrecordingctl renumber "
                        "--all\" makes room");
        return static_cast<std::int32_t>(next_++);
    }

  private:
    void Pass(std::int32_t id) { next_ = std::max(next_, std::int64_t{id} + 1); }

    std::unordered_multimap<std::string, std::int32_t> free_; // Of rules before.
    std::int64_t next_ = 0;
};

} // namespace

RuleList RulesAfter(RuleList const& before, std::vector<ImportedRule> const& imported,
                    bool replaces) {
    Ids ids(before, imported, replaces);
    RuleList rules;
    if (!replaces)
        rules = before;
    for (ImportedRule const& from : imported) {
        rules.push_back(from.rule);
        if (!replaces || !from.hasId)
            rules.back().callrecordingrule_id = ids.For(from.rule);
    }
    return rules;
}

} // namespace CallRecordingUtils
