// Cells and tables of a page.

#ifndef RECORDS_PAGE_CELLS_H
#define RECORDS_PAGE_CELLS_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "records/counting/Tally.h"

namespace CallRecordingUtils {

/// "12.5&nbsp;%": the percent sign stays on the line of its number.
std::string PercentHtml(std::uint64_t calls, std::uint64_t all);

/// from -> to, and below it where the call is.
std::string ExampleHtml(std::optional<Example> const& example);

std::string Cell(std::string const& html);     ///< Of one line on a telephone.
std::string WideCell(std::string const& html); ///< May take a line there.
std::string NameCell(std::string const& html); ///< What the row is about.
std::string CallsCell(std::uint64_t calls);    ///< A number.
std::string ShareCell(std::uint64_t calls, std::uint64_t all);
std::string BarCell(std::uint64_t calls, std::uint64_t most); ///< Empty for more than most.
std::string TimesCell(Tally const& tally);                    ///< The first and the last time.

/// A table with a caption, and a heading for each column.
class HtmlTable {
  public:
    /// Headings that begin with "#" are above numbers; the mark is left out unless it stands alone.
    HtmlTable(std::string const& id, std::string const& caption,
              std::vector<std::string> const& headings);

    /// attributes are those of the row: " id=\"rule-1\"".
    void Add(std::string const& cells, std::string const& attributes = "");

    std::string Html() const { return html_ + "</tbody></table>\n"; }

  private:
    std::string html_;
};

/// Folded unless isOpen.
std::string Details(std::string const& summary, std::string const& html, bool isOpen);

} // namespace CallRecordingUtils

#endif
