// Writes cells and tables.

#include "records/page/Cells.h"

#include <fmt/format.h>

#include "records/page/Html.h"
#include "records/report/ReportJson.h"

namespace CallRecordingUtils {

std::string PercentHtml(std::uint64_t calls, std::uint64_t all) {
    std::string const text = Percent(calls, all);
    return Escaped(text.substr(0, text.size() - 2)) + "&nbsp;%";
}

std::string ExampleHtml(std::optional<Example> const& example) {
    if (!example)
        return "";
    return fmt::format("{} &rarr; {}<br><small>{}:{}</small>", Escaped(example->from),
                       Escaped(example->to), Escaped(example->file), example->line);
}

std::string Cell(std::string const& html) {
    return "<td>" + html + "</td>";
}

std::string WideCell(std::string const& html) {
    return "<td class=\"wide\">" + html + "</td>";
}

std::string NameCell(std::string const& html) {
    return "<td class=\"wide name\">" + html + "</td>";
}

std::string CallsCell(std::uint64_t calls) {
    return fmt::format("<td class=\"number\" data-name=\"Calls\">{}</td>", DataElement(calls));
}

std::string ShareCell(std::uint64_t calls, std::uint64_t all) {
    return "<td class=\"number\">" + PercentHtml(calls, all) + "</td>";
}

std::string BarCell(std::uint64_t calls, std::uint64_t most) {
    if (calls == 0 || calls > most)
        return "<td class=\"bar\"></td>";
    return fmt::format("<td class=\"bar\"><i style=\"width:{:.2f}%\"></i></td>",
                       100 * Share(calls, most));
}

std::string TimesCell(Tally const& tally) {
    return WideCell(tally.first ? fmt::format("<span class=\"time\">{}</span><br><span "
                                              "class=\"time\">{}</span>",
                                              TimeText(*tally.first), TimeText(*tally.last))
                                : "");
}

HtmlTable::HtmlTable(std::string const& id, std::string const& caption,
                     std::vector<std::string> const& headings) {
    html_ = fmt::format("<table id=\"{}\"><caption>{}</caption><thead><tr>", id, caption);
    for (std::string const& heading : headings)
        html_ += heading.empty() ? "<td></td>"
                 : heading.size() > 1 && heading[0] == '#'
                     ? "<th scope=\"col\" class=\"number\">" + heading.substr(1) + "</th>"
                     : "<th scope=\"col\">" + heading + "</th>";
    html_ += "</tr></thead><tbody>\n";
}

void HtmlTable::Add(std::string const& cells, std::string const& attributes) {
    html_ += "<tr" + attributes + ">" + cells + "</tr>\n";
}

std::string Details(std::string const& summary, std::string const& html, bool isOpen) {
    return fmt::format("<details{}><summary>{}</summary>{}</details>\n", isOpen ? " open" : "",
                       summary, html);
}

} // namespace CallRecordingUtils
