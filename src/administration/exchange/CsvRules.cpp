// Reads rules from comma-separated values and writes them.

#include "administration/exchange/CsvRules.h"

#include <algorithm>

#include <fmt/format.h>

#include "administration/exchange/RuleColumns.h"
#include "administration/exchange/RuleRecord.h"
#include "common/MemoryFile.h"
#include "text/CsvRows.h"

namespace CallRecordingUtils {
namespace {

/// Excel's first line, which names the separator: "sep=;", of which the separator makes two fields.
bool IsSeparatorLine(CsvRows const& rows) {
    return rows.FieldCount() == 2 && (rows.Field(0) == "sep=" || rows.Field(0) == "SEP=") &&
           rows.Field(1).empty();
}

/// Reads the row of names, and says which column each is.
class Header {
  public:
    Header(CsvRows const& rows, RenamedColumns const& renamed, RuleRecords& result)
        : rows_(rows), renamed_(renamed), result_(result) {
        for (std::size_t i = 0; i < rows.FieldCount(); ++i)
            columns_.push_back(ColumnAt(i));
        Check();
    }

    /// By their place; null where a column is spare.
    std::vector<RuleColumn const*> const& Columns() const { return columns_; }

  private:
    RuleColumn const* ColumnAt(std::size_t place) {
        std::string const& name = rows_.Field(place);
        for (auto const& [column, theirs] : renamed_)
            if (theirs == name || theirs == std::to_string(place + 1))
                return column;
        RuleColumn const* const column = ColumnOf(name);
        auto const isColumn = [column](auto const& other) { return other.first == column; };
        if (column != nullptr && std::any_of(renamed_.begin(), renamed_.end(), isColumn))
            return nullptr; // Another one is to be read instead.
        RuleColumn const* const similar = column == nullptr ? SimilarColumn(name) : nullptr;
        if (similar != nullptr)
            Blame(fmt::format("there is no column \"{}\"; is {} meant?", name, similar->name));
        return column;
    }

    std::size_t Count(RuleColumn const* column) const {
        return static_cast<std::size_t>(std::count(columns_.begin(), columns_.end(), column));
    }

    void Check() {
        for (auto const& [column, theirs] : renamed_)
            if (Count(column) == 0)
                Blame(
                    fmt::format("there is no column \"{}\" that could be read as {}; there are {}",
                                theirs, column->name, Names(false)));
        for (RuleColumn const& column : kRuleColumns)
            if (Count(&column) > 1)
                Blame(fmt::format("the column {} is there twice", column.name));
        if (Count(nullptr) == columns_.size())
            Blame(fmt::format("none of the columns is known: {}; there are {}, and --column "
                              "from=NAME says which one is from",
                              Names(true), FieldNames()));
        if (result_.faults.empty())
            CheckSpare();
    }

    /// Notes the columns that are not read. Where one of them may be that of a side, rules would
    /// take more than is meant.
    void CheckSpare() {
        std::string const spare = Names(true);
        if (spare.empty())
            return;
        bool const hasFrom = Count(ColumnOf("from")) > 0, hasTo = Count(ColumnOf("to")) > 0;
        bool const isSideMissing = (!hasFrom && (!hasTo || Count(ColumnOf("from_type")) > 0)) ||
                                   (!hasTo && Count(ColumnOf("to_type")) > 0);
        if (isSideMissing)
            return Blame(fmt::format("there is no column {}, and these are not known: {}; --column "
                                     "{}=NAME says which one it is",
                                     hasFrom ? "to" : "from", spare, hasFrom ? "to" : "from"));
        result_.notes.push_back(
            {rows_.Line(),
             fmt::format("columns that are not read, as no field is called so: {}{}", spare,
                         hasFrom && hasTo ? ""
                         : hasFrom        ? "; there is no column to, so every called side is meant"
                                   : "; there is no column from, so every calling side is meant")});
    }

    void Blame(std::string const& message) { result_.faults.push_back({rows_.Line(), message}); }

    /// The names of the columns, or of the spare ones.
    std::string Names(bool spareOnly) const {
        std::string names;
        for (std::size_t i = 0; i < columns_.size(); ++i)
            if (!rows_.Field(i).empty() && (columns_[i] == nullptr || !spareOnly))
                names += fmt::format("{}\"{}\"", names.empty() ? "" : ", ", rows_.Field(i));
        return names;
    }

    CsvRows const& rows_;
    RenamedColumns const& renamed_;
    RuleRecords& result_;
    std::vector<RuleColumn const*> columns_;
};

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

/// An empty field is left out.
void Add(RuleRecord& record, RuleColumn const& column, std::string const& text) {
    if (!text.empty())
        record.values[column.member] = {text, record.line, column.name};
}

/// What a row has behind the last column.
bool HasMore(CsvRows const& rows, std::size_t columns) {
    for (std::size_t i = columns; i < rows.FieldCount(); ++i)
        if (!rows.Field(i).empty())
            return true;
    return false;
}

} // namespace

RuleRecords ReadCsvRules(std::string const& text, RenamedColumns const& renamed) {
    RuleRecords result;
    MemoryFile const file(text);
    Input input(file.Path());
    Lines lines(input);
    CsvRows rows(lines);
    std::vector<RuleColumn const*> columns;
    while (rows.Next()) {
        if (!rows.Problem().empty()) {
            result.faults.push_back({rows.Line(), rows.Problem()});
            continue;
        }
        if (columns.empty()) {
            if (rows.Line() == 1 && IsSeparatorLine(rows))
                continue;
            columns = Header(rows, renamed, result).Columns();
            if (!result.faults.empty())
                break; // Every row would be wrong.
            continue;
        }
        if (HasMore(rows, columns.size())) {
            result.faults.push_back(
                {rows.Line(), fmt::format("{} fields under {} columns; a field that contains a "
                                          "separator is written in quotes",
                                          rows.FieldCount(), columns.size())});
            continue; // Nobody knows which field is which.
        }
        RuleRecord& record = result.records.emplace_back();
        record.line = rows.Line();
        for (std::size_t i = 0; i < std::min(rows.FieldCount(), columns.size()); ++i)
            if (columns[i] != nullptr)
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
        Add(record, kRuleColumns[i], fields[i]);
    return record;
}

std::string CsvHeader() {
    return FieldNames() + '\n';
}

std::string CsvRow(Rule const& rule) {
    std::string row;
    for (std::string const& field : FieldsOf(rule))
        row += fmt::format("{}{}", row.empty() ? "" : ",", Quoted(field));
    return row + '\n';
}

} // namespace CallRecordingUtils
