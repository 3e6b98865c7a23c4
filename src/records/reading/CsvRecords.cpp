// Finds the columns of calls in the rows of a CSV file.

#include "records/reading/CsvRecords.h"

#include <fmt/format.h>

#include "common/Error.h"

namespace CallRecordingUtils {
namespace {

constexpr std::size_t kNone = ColumnNames::kNone;

/// The index of the column that text numbers from 1; kNone when text is not a number.
std::size_t NumberOf(std::string const& text) {
    bool const isNumber = !text.empty() && text.size() < 7 && text[0] != '0' &&
                          text.find_first_not_of("0123456789") == std::string::npos;
    return isNumber ? std::stoul(text) - 1 : kNone;
}

std::string Found(CsvRows const& rows) {
    std::string text;
    for (std::size_t i = 0; i < rows.FieldCount() && text.size() < 200; ++i)
        text += (i > 0 ? ", " : "") + rows.Field(i).substr(0, 40);
    return text;
}

} // namespace

CsvRecords::CsvRecords(Lines& lines, ColumnNames const& names, bool hasHeader,
                       std::string const& path)
    : rows_(lines) {
    columns_.fill(kNone);
    FindColumns(names, hasHeader, path);
}

void CsvRecords::FindColumns(ColumnNames const& names, bool hasHeader, std::string const& path) {
    if (hasHeader && rows_.Next() && !rows_.Problem().empty())
        throw Error(Error::Kind::Unreadable, fmt::format("{}:{}: no row of column names: {}", path,
                                                         rows_.Line(), rows_.Problem()));
    for (std::size_t i = 0; i < kColumnCount; ++i) {
        auto const column = static_cast<Column>(i);
        std::size_t best = kNone;
        for (std::size_t at = 0; hasHeader && at < rows_.FieldCount(); ++at) {
            std::size_t const rank = names.Rank(column, rows_.Field(at));
            if (rank < best) {
                best = rank;
                columns_[i] = at;
            }
        }
        std::string const& given = names.Given(column);
        if (best == kNone)
            columns_[i] = NumberOf(given);
        if (columns_[i] == kNone && (i <= kColumnTo || !given.empty()))
            throw Error(
                Error::Kind::Unreadable,
                !hasHeader
                    ? fmt::format("{}: without a row of names {} takes the number of a column, "
                                  "1 is the first",
                                  path, ColumnNames::Option(column))
                    : fmt::format("{}:{}: no column \"{}\" among: {}\nname it with {} (a number "
                                  "will do); --no-header if this is a call already",
                                  path, rows_.Line(),
                                  given.empty() ? (i == 0 ? "from" : "to") : given, Found(rows_),
                                  ColumnNames::Option(column)));
    }
}

bool CsvRecords::Next(CallRecord& record) {
    if (!rows_.Next())
        return false;
    record.line = rows_.Line();
    record.problem = rows_.Problem();
    for (std::size_t i = 0; i < kColumnCount; ++i) {
        record.values[i].clear();
        if (columns_[i] == kNone || !record.problem.empty())
            continue;
        if (columns_[i] < rows_.FieldCount())
            record.values[i] = rows_.Field(columns_[i]);
        else
            record.problem =
                fmt::format("it has {} fields, and {} is number {}", rows_.FieldCount(),
                            ColumnNames::Option(static_cast<Column>(i)) + 2, columns_[i] + 1);
    }
    return true;
}

} // namespace CallRecordingUtils
