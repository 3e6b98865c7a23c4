// Writes and reads the blocks.

#include "administration/exchange/RuleBlocks.h"

#include <algorithm>
#include <map>
#include <set>
#include <string_view>
#include <utility>

#include <fmt/format.h>

#include "administration/exchange/ImportedRules.h"
#include "administration/exchange/RuleColumns.h"
#include "model/RuleSides.h"
#include "json/Bytes.h"

namespace CallRecordingUtils {
namespace {

constexpr std::string_view kBlanks = " \t\r";
constexpr std::string_view kFaultMark = "#!";

std::string_view Trimmed(std::string_view text) {
    std::size_t const begin = text.find_first_not_of(kBlanks);
    if (begin == std::string_view::npos)
        return {};
    return text.substr(begin, text.find_last_not_of(kBlanks) + 1 - begin);
}

/// The lines of text without their line ends.
std::vector<std::string_view> LinesOf(std::string_view text) {
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        std::size_t const end = std::min(text.find('\n'), text.size());
        lines.push_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

std::string Written(std::string const& value) {
    bool const isPlain = Trimmed(value) == value && value.substr(0, 1) != "\"";
    if (isPlain)
        return ToUtf8(value);
    std::string quoted;
    for (char const c : value)
        quoted += c == '"' ? "\"\"" : std::string{c};
    return '"' + ToUtf8(quoted) + '"';
}

/// The opposite of Written. What is not quoted as Written does stands as it is.
std::string Read(std::string_view text) {
    std::string_view const value = Trimmed(text);
    if (value.size() < 2 || value.front() != '"' || value.back() != '"')
        return BytesOf(value);
    std::string inner;
    for (std::size_t i = 1; i + 1 < value.size(); ++i) {
        if (value[i] == '"' && (i + 2 == value.size() || value[++i] != '"'))
            return BytesOf(value);
        inner += value[i];
    }
    return BytesOf(inner);
}

std::string BlockOf(Rule const& rule) {
    std::string block;
    auto const fields = FieldsOf(rule);
    for (std::size_t i = 0; i < fields.size(); ++i)
        block += fmt::format("{}:{}{}\n", kRuleColumns[i].name, fields[i].empty() ? "" : " ",
                             Written(fields[i]));
    return block;
}

/// Whether an empty text is a value of the field, and not the lack of one.
bool MayBeEmpty(RuleMember member) {
    return member == RuleMember::CallerEntry || member == RuleMember::CalledEntry ||
           member == RuleMember::RecordTo || member == RuleMember::Duration ||
           member == RuleMember::Description;
}

/// Adds what a line of a block says.
void AddLine(std::string_view text, std::size_t line, RuleRecord& record,
             std::vector<ImportFault>& faults) {
    std::size_t const colon = text.find(':');
    if (colon == std::string_view::npos)
        return faults.push_back({line, "expected \"name: value\", or # before a comment"});
    std::string const name(Trimmed(text.substr(0, colon)));
    RuleColumn const* const column = ColumnOf(name);
    if (column == nullptr)
        return faults.push_back(
            {line, fmt::format("there is no field \"{}\"; there are {}", name, FieldNames())});
    std::string const value = Read(text.substr(colon + 1));
    if (value.empty() && !MayBeEmpty(column->member))
        return;
    if (!record.values.emplace(column->member, RuleRecord::Value{value, line, column->name}).second)
        faults.push_back({line, fmt::format("{} is given twice in this block", column->name)});
}

std::vector<RuleRecord> RecordsIn(std::string const& text, std::vector<ImportFault>& faults) {
    std::vector<RuleRecord> records;
    bool isInBlock = false;
    std::size_t number = 0;
    for (std::string_view const line : LinesOf(text)) {
        ++number;
        std::string_view const trimmed = Trimmed(line);
        if (trimmed.substr(0, 1) == "#")
            continue;
        if (!trimmed.empty() && !isInBlock)
            records.emplace_back().line = number;
        isInBlock = !trimmed.empty();
        if (isInBlock)
            AddLine(line, number, records.back(), faults);
    }
    return records;
}

/// Makes blocks of records that came back.
class BlockReader {
  public:
    BlockReader(OpenRules const& open, ReadBlocks& result) : open_(open), result_(result) {
        for (std::size_t const place : open.places)
            placeOf_.emplace(std::to_string(open.rules[place].callrecordingrule_id), place);
    }

    void Add(RuleRecord record) {
        auto const id = record.values.find(RuleMember::Id);
        if (id == record.values.end())
            return AddChanged(std::nullopt, record, nullptr);
        auto const found = placeOf_.find(id->second.text);
        if (found == placeOf_.end())
            return Blame(
                id->second.line,
                fmt::format("no rule {} is open here; a new rule has no id", id->second.text));
        std::size_t const place = found->second;
        if (!isThere_.insert(place).second)
            return Blame(id->second.line, fmt::format("rule {} is here twice; a new rule has no id",
                                                      id->second.text));
        Rule const& before = open_.rules[place];
        std::vector<ImportFault> none;
        RuleRecord const old = RecordsIn(BlockOf(before), none).at(0);
        for (auto const& [member, value] : old.values)
            record.values.emplace(member, RuleRecord::Value{value.text, record.line, value.name});
        if (record.AllFields() == old.AllFields())
            result_.blocks.push_back({place, before, false, record.line});
        else
            AddChanged(place, record, &old);
    }

  private:
    void Blame(std::size_t line, std::string const& message) {
        result_.faults.push_back({line, message});
    }

    /// Adds a rule with what record says. A side that is as it was in the record old is not read
    /// again: it may be malformed.
    void AddChanged(std::optional<std::size_t> place, RuleRecord record, RuleRecord const* old) {
        auto const isSame = [&](RuleMember member) {
            return old != nullptr && record.values[member].text == old->values.at(member).text;
        };
        auto const take = [&](RuleMember entry, RuleMember type) {
            bool const isOld = isSame(entry) && isSame(type);
            if (isOld) {
                record.values.erase(entry);
                record.values.erase(type);
            }
            return isOld;
        };
        bool const isCallerOld = take(RuleMember::CallerEntry, RuleMember::CallerType);
        bool const isCalledOld = take(RuleMember::CalledEntry, RuleMember::CalledType);
        ImportedRule made = RuleOf(record);
        result_.faults.insert(result_.faults.end(), made.faults.begin(), made.faults.end());
        if (isCallerOld) {
            made.rule.caller_pattern = open_.rules[*place].caller_pattern;
            made.rule.caller_call_type = open_.rules[*place].caller_call_type;
        }
        if (isCalledOld) {
            made.rule.called_pattern = open_.rules[*place].called_pattern;
            made.rule.called_call_type = open_.rules[*place].called_call_type;
        }
        result_.blocks.push_back({place, made.rule, true, record.line});
    }

    OpenRules const& open_;
    ReadBlocks& result_;
    std::map<std::string, std::size_t> placeOf_; // By identifier.
    std::set<std::size_t> isThere_;
};

} // namespace

std::string BlocksOf(OpenRules const& open) {
    std::string text;
    for (std::size_t const place : open.places)
        text += (text.empty() ? "" : "\n") + BlockOf(open.rules[place]);
    return text;
}

ReadBlocks ReadRuleBlocks(std::string const& text, OpenRules const& open) {
    ReadBlocks result;
    BlockReader reader(open, result);
    for (RuleRecord& record : RecordsIn(text, result.faults))
        reader.Add(std::move(record));
    std::stable_sort(result.faults.begin(), result.faults.end(),
                     [](ImportFault const& a, ImportFault const& b) { return a.line < b.line; });
    return result;
}

std::string WithFaults(std::string const& text, std::vector<ImportFault> const& faults) {
    std::string marked;
    std::size_t number = 0;
    for (std::string_view const line : LinesOf(text)) {
        ++number;
        for (ImportFault const& fault : faults)
            if (fault.line == number)
                for (std::string_view const part : LinesOf(fault.message))
                    marked += fmt::format("{} {}\n", kFaultMark, part);
        if (line.substr(0, kFaultMark.size()) != kFaultMark)
            marked += std::string(line) + '\n';
    }
    return marked;
}

namespace {

/// The places in the file of the rules that are open. Throws an Error if one is not there as it
/// was, or they have another order.
std::vector<std::size_t> PlacesNow(RuleEdit const& edit, OpenRules const& open) {
    RuleList const& now = edit.Before();
    std::vector<std::size_t> places;
    std::size_t next = 0;
    for (std::size_t const place : open.places) {
        Rule const& rule = open.rules[place];
        while (next < now.size() && !AreEqual(now[next], rule))
            ++next;
        if (next == now.size())
            throw Error(Error::Kind::Unsaved,
                        fmt::format("nothing was changed: rule {} was changed, moved or deleted by "
                                    "somebody else while it was open here",
                                    rule.callrecordingrule_id));
        places.push_back(next++);
    }
    return places;
}

} // namespace

void Apply(RuleEdit& edit, OpenRules const& open, std::vector<RuleBlock> const& blocks) {
    std::vector<std::size_t> const places = PlacesNow(edit, open);
    auto const placeNow = [&](std::size_t origin) {
        auto const at = std::lower_bound(open.places.begin(), open.places.end(), origin);
        return places[static_cast<std::size_t>(at - open.places.begin())];
    };
    std::vector<std::size_t> kept; // In the order of their blocks.
    for (RuleBlock const& block : blocks)
        if (block.origin) {
            kept.push_back(placeNow(*block.origin));
            if (block.isChanged)
                edit.Set(kept.back(), block.rule);
        }
    std::vector<std::size_t> inOrder = kept;
    std::sort(inOrder.begin(), inOrder.end());
    edit.Exchange(inOrder, kept);
    // A new rule follows the block above it; at the top it goes before the one that follows.
    std::size_t above = kept.empty() ? (places.empty() ? edit.Count() : places.front())
                                     : edit.PlaceOf(kept.front());
    std::size_t seen = 0;
    for (RuleBlock const& block : blocks)
        if (block.origin)
            above = edit.PlaceOf(kept[seen++]) + 1;
        else
            edit.Insert(block.rule, above++);
    for (std::size_t const place : places)
        if (!std::binary_search(inOrder.begin(), inOrder.end(), place))
            edit.Delete(edit.PlaceOf(place));
}

} // namespace CallRecordingUtils
