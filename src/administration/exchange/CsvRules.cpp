// Reads rules from comma-separated values, and writes them.

#include <algorithm>
#include <array>

#include <fmt/format.h>

#include "administration/exchange/CsvRules.h"
#include "administration/exchange/RuleRecord.h"
#include "model/CallTypeNames.h"
#include "text/CsvRows.h"
#include "text/Similar.h"
#include "validation/SidePattern.h"

namespace CallRecordingUtils {
namespace {

constexpr std::array<char const*, 10> kColumns{
    "id",       "from",        "from_type",      "to",     "to_type", "record_to",
    "duration", "description", "recording_type", "enabled"};

/// The name of the column, "" when it is none of ours; blanks and capitals do not count, and "-" is
/// as good as "_".
std::string ColumnOf(std::string name) {
    if (name.compare(0, 3, "\xEF\xBB\xBF") == 0)
        name.erase(0, 3);
    std::string plain;
    for (char const c : name)
        if (c != ' ')
            plain +=
                c == '-' ? '_' : static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    auto const found = std::find(kColumns.begin(), kColumns.end(), plain);
    return found != kColumns.end() ? *found : "";
}

std::vector<std::string> ReadHeader(CsvRows& rows, std::vector<ImportFault>& faults) {
    std::vector<std::string> columns;
    for (std::size_t i = 0; i < rows.FieldCount(); ++i) {
        columns.push_back(ColumnOf(rows.Field(i)));
        if (columns.back().empty())
            faults.push_back({rows.Line(), fmt::format("\"{}\" is no column; there are: {}",
                                                       rows.Field(i), fmt::join(kColumns, ", "))});
        else if (std::count(columns.begin(), columns.end(), columns.back()) > 1)
            faults.push_back({rows.Line(), columns.back() + " is there twice"});
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

} // namespace

RuleRecords ReadCsvRules(std::string const& path) {
    RuleRecords result;
    Input input(path);
    Lines lines(input);
    CsvRows rows(lines);
    std::vector<std::string> columns;
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
            result.faults.push_back({rows.Line(), fmt::format("{} fields under {} columns; a field "
                                                              "with a separator in it is written "
                                                              "between quotes",
                                                              rows.FieldCount(), columns.size())});
            continue; // Nobody knows which field is which.
        }
        RuleRecord& record = result.records.emplace_back();
        record.line = rows.Line();
        for (std::size_t i = 0; i < rows.FieldCount(); ++i)
            if (!rows.Field(i).empty())
                record.values[columns[i]] = {rows.Field(i), rows.Line(), columns[i]};
        if (record.values.empty())
            result.records.pop_back(); // Commas only, as a spreadsheet writes for an empty line.
    }
    return result;
}

std::string CsvHeader() {
    return fmt::format("{}\n", fmt::join(kColumns, ","));
}

std::string CsvRow(Rule const& rule) {
    std::array<std::string, kColumns.size()> const fields{
        std::to_string(rule.callrecordingrule_id),
        Quoted(ToEntry(rule.caller_pattern, rule.caller_call_type)),
        CallTypeName(rule.caller_call_type),
        Quoted(ToEntry(rule.called_pattern, rule.called_call_type)),
        CallTypeName(rule.called_call_type),
        Quoted(rule.record_to),
        Quoted(rule.recording_duration),
        Quoted(rule.description),
        std::to_string(rule.call_recording_type),
        rule.recording_rule_state == RULE_ENABLED ? "yes" : "no"};
    return fmt::format("{}\n", fmt::join(fields, ","));
}

} // namespace CallRecordingUtils
