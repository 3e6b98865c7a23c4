// Layout of a table: the width of the columns, and cells wrapped into them.

#include "output/Table.h"

#include <algorithm>
#include <cstdlib>
#include <numeric>

#include <unistd.h>

#include <fmt/format.h>

#include "output/Pager.h"
#include "output/Screen.h"
#include "text/Printable.h"
#include "text/Wrap.h"

namespace callrecordingctl {
namespace {

constexpr std::size_t kGap = 2;

bool IsTerminal() {
    return isatty(STDOUT_FILENO) != 0;
}

std::size_t Total(std::vector<std::size_t> const& widths) {
    return std::accumulate(widths.begin(), widths.end(), kGap * (widths.size() - 1));
}

/// Narrows the widest columns step by step until they fit the screen; those with times only if that
/// is not enough.
void Narrow(TableColumns& columns, std::vector<bool> const& haveTimes, std::size_t screen) {
    constexpr std::size_t kNarrowest = 8;
    for (bool const mayBreakTimes : {false, true})
        while (columns.indent + Total(columns.widths) > screen) {
            std::size_t widest = 0;
            std::size_t* narrowed = nullptr;
            for (std::size_t i = 0; i < columns.widths.size(); ++i)
                if (columns.widths[i] > widest &&
                    (mayBreakTimes || !haveTimes[columns.first + i])) {
                    widest = columns.widths[i];
                    narrowed = &columns.widths[i];
                }
            if (widest <= kNarrowest)
                break;
            --*narrowed;
        }
}

/// The cells of one row that belong to columns, on as many lines as they need.
std::string CellsText(std::vector<std::string> const& cells, TableColumns const& columns,
                      char const* style) {
    std::string text;
    auto const first = cells.begin() + static_cast<std::ptrdiff_t>(columns.first);
    std::size_t const count = columns.widths.size();
    std::vector<std::string_view> rest(first, first + static_cast<std::ptrdiff_t>(count));
    auto const isEmpty = [](std::string_view cell) { return cell.empty(); };
    do {
        std::string line(columns.indent, ' ');
        for (std::size_t i = 0; i < count; ++i) {
            std::string_view const part = TakeLine(rest[i], columns.widths[i]);
            line.append(part).append(columns.widths[i] + kGap - DisplayWidth(part), ' ');
        }
        line.erase(line.find_last_not_of(' ') + 1);
        text += fmt::format("{}{}{}\n", style, line, *style != '\0' ? "\x1B[0m" : "");
    } while (!std::all_of(rest.begin(), rest.end(), isEmpty));
    return text;
}

char const* Escape(RowStyle style) {
    switch (style) {
    case RowStyle::Pale: return "\x1B[2m";
    case RowStyle::Alarm: return "\x1B[31m";
    default: return "";
    }
}

std::size_t CountLines(std::string const& text) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

} // namespace

/// The columns of each line that a row takes: all on one, or those from second_ on on a line below.
std::vector<TableColumns> Table::Lines(std::size_t screen, bool isSplit) const {
    std::vector<std::size_t> const widths = NaturalWidths();
    std::vector<bool> haveTimes(widths.size());
    for (Row const& row : rows_)
        for (std::size_t i = 0; i < row.cells.size(); ++i)
            haveTimes[i] = haveTimes[i] || IsTime(row.cells[i]);
    auto const at = [&](std::size_t i) { return widths.begin() + static_cast<std::ptrdiff_t>(i); };
    std::vector<TableColumns> lines{{0, 0, widths}};
    if (isSplit) {
        lines[0].widths.assign(widths.begin(), at(second_));
        std::size_t const indent = std::accumulate(widths.begin(), at(under_), kGap * under_);
        lines.push_back({second_, indent, {at(second_), widths.end()}});
    }
    for (TableColumns& line : lines)
        Narrow(line, haveTimes, screen);
    return lines;
}

bool HasColour() {
    char const* const refusal = std::getenv("NO_COLOR");
    char const* const terminal = std::getenv("TERM");
    bool const isDumb = terminal == nullptr || std::string_view(terminal) == "dumb";
    return IsTerminal() && !isDumb && (refusal == nullptr || *refusal == '\0');
}

void Table::Add(std::vector<std::string> cells, RowStyle style) {
    for (std::string& cell : cells)
        cell = Printable(cell);
    rows_.push_back({std::move(cells), style});
}

std::vector<std::size_t> Table::NaturalWidths() const {
    std::vector<std::size_t> widths(rows_.front().cells.size());
    for (Row const& row : rows_)
        for (std::size_t i = 0; i < row.cells.size(); ++i)
            widths[i] = std::max(widths[i], DisplayWidth(row.cells[i]));
    return widths;
}

/// Removes the columns that may give way and are the same for all rows. Returns a sentence with
/// what they hold.
std::string Table::WithoutEqualColumns() {
    std::string said;
    for (std::string const& header : mayGiveWay_) {
        auto& headers = rows_.front().cells;
        auto const found = std::find(headers.begin(), headers.end(), header);
        if (found == headers.end() || rows_.size() < 3)
            continue;
        auto const at = found - headers.begin();
        auto const cellOf = [at](Row& row) { return row.cells.begin() + at; };
        std::string const value = *cellOf(rows_[1]);
        if (std::any_of(rows_.begin() + 1, rows_.end(),
                        [&](Row& row) { return *cellOf(row) != value; }))
            continue;
        said += fmt::format("{}{} {}", said.empty() ? "For all: " : ", ", header,
                            value.empty() ? "(empty)" : value);
        for (Row& row : rows_)
            row.cells.erase(cellOf(row));
        second_ -= static_cast<std::size_t>(at) < second_ ? 1 : 0;
        under_ -= static_cast<std::size_t>(at) < under_ ? 1 : 0;
    }
    return said;
}

std::string Table::Text(std::size_t screen, bool isSplit, std::size_t& headerLines) const {
    bool const hasColour = HasColour();
    std::vector<TableColumns> const lines = Lines(screen, isSplit);
    std::size_t border = 0;
    for (TableColumns const& line : lines)
        border = std::max(border, line.indent + Total(line.widths));
    std::string text;
    for (Row const& row : rows_) {
        bool const isHeader = &row == &rows_.front();
        for (TableColumns const& line : lines) {
            // The first of several lines is bold, so that one sees where a row begins.
            bool const isBold = isHeader || (lines.size() > 1 && &line == &lines.front() &&
                                             row.style == RowStyle::Plain);
            text += CellsText(row.cells, line,
                              !hasColour ? ""
                              : isBold   ? "\x1B[1m"
                                         : Escape(row.style));
        }
        if (isHeader && IsTerminal())
            text += std::string(std::min(border, screen), '-') + '\n';
        if (isHeader)
            headerLines = CountLines(text);
    }
    return text;
}

void Table::Print() const {
    std::size_t const screen = ScreenWidth(STDOUT_FILENO);
    Table table = *this;
    std::string said;
    if (Total(NaturalWidths()) > screen)
        said = table.WithoutEqualColumns();
    std::size_t headerLines = 0;
    std::string text = table.Text(screen, false, headerLines);
    if (table.second_ > 0 && Total(table.NaturalWidths()) > screen) {
        std::size_t splitHeaderLines = 0;
        std::string split = table.Text(screen, true, splitHeaderLines);
        if (CountLines(split) <= CountLines(text)) {
            text = std::move(split);
            headerLines = splitHeaderLines;
        }
    }
    Page(said.empty() ? text : text + WrapText(said, screen, 2), headerLines);
}

} // namespace callrecordingctl
