// A table on standard output.

#ifndef CALLRECORDINGCTL_OUTPUT_TABLE_H
#define CALLRECORDINGCTL_OUTPUT_TABLE_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace callrecordingctl {

/// Whether standard output takes colour: a terminal that is not dumb, and no NO_COLOR.
bool HasColour();

/// text without what could steer a terminal.
std::string Printable(std::string_view text);

/// The columns that text, read as UTF-8, takes on a terminal.
std::size_t DisplayWidth(std::string_view text);

/// Rows of cells under headers. On a terminal, or when COLUMNS is set, the table fits the width:
/// where it would not, the columns from second on go on a line of their own, indented as far as the
/// column under takes, and what is still too long is wrapped. Otherwise every row is one line, for
/// grep and awk.
class Table {
  public:
    explicit Table(std::vector<std::string> headers, std::size_t second = 0, std::size_t under = 0)
        : rows_{{std::move(headers), false}}, second_(second), under_(under) {}

    /// Adds a row; a pale one is printed faintly where there is colour.
    void Add(std::vector<std::string> cells, bool isPale = false);
    void Print() const;

  private:
    struct Row {
        std::vector<std::string> cells;
        bool isPale;
    };
    std::vector<std::size_t> NaturalWidths() const;

    std::vector<Row> rows_; // The first holds the headers.
    std::size_t second_;
    std::size_t under_;
};

} // namespace callrecordingctl

#endif
