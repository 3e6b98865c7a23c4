// A table on standard output.

#ifndef CALLRECORDINGCTL_OUTPUT_TABLE_H
#define CALLRECORDINGCTL_OUTPUT_TABLE_H

#include <cstddef>
#include <string>
#include <vector>

#include "Names.h"

namespace callrecordingctl {

/// Whether to print colour: on a terminal that is not dumb, unless NO_COLOR is set.
bool HasColour();

enum class RowStyle { Plain, Pale, Alarm };

/// A run of columns that share their lines.
struct TableColumns {
    std::size_t first;
    std::size_t indent;
    std::vector<std::size_t> widths;
};

/// Rows of cells under headers. On a terminal, or when COLUMNS is set, the table is made to fit the
/// width: first, columns that may give way and are the same for all rows are left out and printed
/// once below; then the widest columns are narrowed, and what is too long for them is wrapped.
/// Where the table is not longer if the columns from `second` on get a line of their own, indented
/// to the column `under`, they do. Otherwise every row is one line, for grep and awk. A table that
/// is longer than the terminal goes through a pager.
class Table {
  public:
    explicit Table(std::vector<std::string> headers, std::size_t second = 0, std::size_t under = 0)
        : rows_{{std::move(headers), RowStyle::Plain}}, second_(second), under_(under) {}

    void Add(std::vector<std::string> cells, RowStyle style = RowStyle::Plain);

    /// Names the headers of the columns that may give way.
    void MayGiveWay(std::vector<std::string> headers) { mayGiveWay_ = std::move(headers); }

    void Print() const;

  private:
    struct Row {
        std::vector<std::string> cells;
        RowStyle style;
    };
    std::vector<std::size_t> NaturalWidths() const;
    std::string WithoutEqualColumns();
    std::vector<TableColumns> Lines(std::size_t screen, bool isSplit) const;
    std::string Text(std::size_t screen, bool isSplit, std::size_t& headerLines) const;

    std::vector<Row> rows_; // The first holds the headers.
    std::size_t second_;
    std::size_t under_;
    std::vector<std::string> mayGiveWay_;
};

} // namespace callrecordingctl

#endif
