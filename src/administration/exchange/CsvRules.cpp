// Reads rules from comma-separated values and writes them.

#include <algorithm>
#include <array>
#include <cctype>

#include <fmt/format.h>

#include "administration/exchange/CsvRules.h"
#include "administration/exchange/RuleRecord.h"
#include "common/MemoryFile.h"
#include "model/CallTypeNames.h"
#include "text/CsvRows.h"
#include "validation/SidePattern.h"

namespace CallRecordingUtils {
namespace {

struct Column {
    char const* name;
    RuleMember member;
};

/// The columns in the order of export.
constexpr std::array<Column, 10> kColumns{{{"id", RuleMember::Id},
                                           {"from", RuleMember::CallerEntry},
                                           {"from_type", RuleMember::CallerType},
                                           {"to", RuleMember::CalledEntry},
                                           {"to_type", RuleMember::CalledType},
                                           {"record_to", RuleMember::RecordTo},
                                           {"duration", RuleMember::Duration},
                                           {"description", RuleMember::Description},
                                           {"recording_type", RuleMember::RecordingType},
                                           {"enabled", RuleMember::Enabled}}};

std::string ColumnNames() {
    std::string names;
    for (Column const& column : kColumns)
        names += fmt::format("{}{}", names.empty() ? "" : ",", column.name);
    return names;
}

/// The column with this name, null if there is none. Blanks and capitals make no difference, nor
/// does "-" for "_".
Column const* ColumnOf(std::string const& name) {
    std::string plain;
    for (char const c : name)
        if (c != ' ')
            plain +=
                c == '-' ? '_' : static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    auto const found = std::find_if(kColumns.begin(), kColumns.end(),
                                    [&](Column const& column) { return column.name == plain; });
    return found != kColumns.end() ? &*found : nullptr;
}

std::vector<Column const*> ReadHeader(CsvRows& rows, std::vector<ImportFault>& faults) {
    std::vector<Column const*> columns;
    for (std::size_t i = 0; i < rows.FieldCount(); ++i) {
        columns.push_back(ColumnOf(rows.Field(i)));
        if (columns.back() == nullptr)
            faults.push_back({rows.Line(), fmt::format("there is no column \"{}\"; there are {}",
                                                       rows.Field(i), ColumnNames())});
        else if (std::count(columns.begin(), columns.end(), columns.back()) > 1)
            faults.push_back(
                {rows.Line(), fmt::format("the column {} is there twice", columns.back()->name)});
    }
    return columns;
}

std::string Quoted(std::string const& text) {
    bool const isPlain = text.find_first_of(",;\t\"\r\n") == std::string::npos &&
                         (text.empty() || (text.front() != ' ' && text.back() != ' '));
    if (isPlain)
        return text;
    std::string quoted = "\"";
    for (char const c : text)
        quoted += c == '"' ? "\"\"" : std::string{c};
    return quoted + "\"";
}

/// The fields of rule in the order of the columns.
std::array<std::string, kColumns.size()> FieldsOf(Rule const& rule) {
    return {std::to_string(rule.callrecordingrule_id),
            ToEntry(rule.caller_pattern, rule.caller_call_type),
            CallTypeName(rule.caller_call_type),
            ToEntry(rule.called_pattern, rule.called_call_type),
            CallTypeName(rule.called_call_type),
            rule.record_to,
            rule.recording_duration,
            rule.description,
            std::to_string(rule.call_recording_type),
            rule.recording_rule_state == RULE_ENABLED ? "yes" : "no"};
}

/// An empty field is left out.
void Add(RuleRecord& record, Column const& column, std::string const& text) {
    if (!text.empty())
        record.values[column.member] = {text, record.line, column.name};
}

} // namespace

RuleRecords ReadCsvRules(std::string const& text) {
    RuleRecords result;
    MemoryFile const file(text);
    Input input(file.Path());
    Lines lines(input);
    CsvRows rows(lines);
    std::vector<Column const*> columns;
    while (rows.Next()) {
        if (!rows.Problem().empty()) {
            result.faults.push_back({rows.Line(), rows.Problem()});
            continue;
        }
        if (columns.empty()) {
            columns = ReadHeader(rows, result.faults);
            if (!result.faults.empty())
                break; // Every row would be wrong.
            continue;
        }
        if (rows.FieldCount() > columns.size()) {
            result.faults.push_back(
                {rows.Line(), fmt::format("{} fields under {} columns; a field that contains a "
                                          "separator is written in quotes",
                                          rows.FieldCount(), columns.size())});
            continue; // Nobody knows which field is which.
        }
        RuleRecord& record = result.records.emplace_back();
        record.line = rows.Line();
        for (std::size_t i = 0; i < rows.FieldCount(); ++i)
            Add(record, *columns[i], rows.Field(i));
        if (record.values.empty())
            result.records.pop_back(); // Commas only: what a spreadsheet writes for an empty line.
    }
    return result;
}

RuleRecord CsvRecordOf(Rule const& rule) {
    RuleRecord record;
    auto const fields = FieldsOf(rule);
    for (std::size_t i = 0; i < fields.size(); ++i)
        Add(record, kColumns[i], fields[i]);
    return record;
}

std::string CsvHeader() {
    return ColumnNames() + '\n';
}

std::string CsvRow(Rule const& rule) {
    std::string row;
    for (std::string const& field : FieldsOf(rule))
        row += fmt::format("{}{}", row.empty() ? "" : ",", Quoted(field));
    return row + '\n';
}

} // namespace CallRecordingUtils
