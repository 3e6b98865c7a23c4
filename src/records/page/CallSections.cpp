// Calls that no rule takes, calls that other rules decide otherwise, and how calls were read.

#include <fmt/format.h>

#include "records/page/Cells.h"
#include "records/page/Html.h"
#include "records/page/Sections.h"
#include "records/report/Reading.h"

namespace CallRecordingUtils {
namespace {

std::string ProblemHtml(ReplayReport::Problem const& problem) {
    return fmt::format("<li>{}:{}: {}</li>\n", Escaped(problem.file), problem.line,
                       Escaped(problem.reason));
}

} // namespace

std::string NotRecordedSection(PageSource const& source) {
    std::string const heading = Heading("Calls that no rule takes");
    std::uint64_t const all = source.report.noRule.calls;
    if (all == 0)
        return heading + "<p>None.</p>\n";
    HtmlTable table("digits", "By the leading digits of the number called",
                    {"Digits", "#Calls", "#Share", "", "Example"});
    Tally rest;
    std::vector<LeadingDigits::Group> groups = source.report.noRuleByDigits.Groups(rest);
    if (rest.calls > 0)
        groups.push_back({"others", rest});
    for (LeadingDigits::Group const& group : groups)
        table.Add(Cell(group.digits.empty() ? "no digits" : Escaped(group.digits)) +
                  CallsCell(group.tally.calls) + ShareCell(group.tally.calls, all) +
                  BarCell(group.tally.calls, groups.front().tally.calls) +
                  WideCell(ExampleHtml(group.tally.example)));
    return heading + table.Html();
}

std::string DifferencesSection(PageSource const& source) {
    ReplayReport const& report = source.report;
    if (!source.facts.there)
        return "";
    std::string html = Heading("What the other rules would have done");
    html += fmt::format("<p>{} of {} calls are decided differently by {}.</p>\n",
                        Grouped(report.different.calls), Grouped(report.all.calls),
                        Escaped(source.facts.there->path));
    if (report.different.calls == 0)
        return html;
    HtmlTable table("differences", "By the rules here and there",
                    {"#Calls", "Here", "There", "Example"});
    for (auto const& [pair, tally] : report.differences)
        table.Add(CallsCell(tally.calls) +
                  fmt::format("<td class=\"wide\" data-name=\"Here\">{}</td><td class=\"wide\" "
                              "data-name=\"There\">{}</td>",
                              OutcomeHtml(source.Rules(), pair.first),
                              OutcomeHtml(source.facts.there->rules, pair.second)) +
                  WideCell(ExampleHtml(tally.example)));
    if (report.moreDifferences.calls > 0)
        table.Add(CallsCell(report.moreDifferences.calls) + Cell("of further pairs of rules") +
                  Cell("") + Cell(""));
    return html + table.Html();
}

std::string ReadingSection(PageSource const& source) {
    ReplayReport const& report = source.report;
    HtmlTable files("files", "The call files", {"File", "#Calls", "#Lines not read", "SHA-256"});
    for (ReplayReport::File const& file : report.files)
        files.Add(NameCell(file.path == "-" ? "standard input" : Escaped(file.path)) +
                  CallsCell(file.calls) +
                  fmt::format("<td class=\"number\" data-name=\"Lines not read\">{}</td>",
                              DataElement(file.unreadable)) +
                  WideCell(file.digest.empty() ? "not known" : "<code>" + file.digest + "</code>"));
    std::string html = Heading("How the call files were read") + files.Html();
    for (std::string const& sentence : ReadingSentences(report.files))
        html += "<p>" + Escaped(sentence) + "</p>\n";
    if (report.all.calls > 0)
        html += fmt::format("<p>How calls were asked about: {}.</p>\n", QuestionsText(report));
    std::string cleaned;
    for (std::size_t i = 0; i < report.cleaned.size(); ++i)
        if (report.cleaned[i] > 0)
            cleaned += fmt::format("{}{} {}", cleaned.empty() ? "" : ", ", kCleaningWords[i],
                                   Grouped(report.cleaned[i]));
    html += cleaned.empty() ? "<p>Addresses were taken as they are.</p>\n"
                            : fmt::format("<p>Removed from addresses: {}. The telephone system may "
                                          "hand them over differently.</p>\n",
                                          cleaned);
    if (report.unreadable > 0) {
        html += fmt::format("<p>{} lines could not be read; the first of them:</p><ul>\n",
                            Grouped(report.unreadable));
        for (ReplayReport::Problem const& problem : report.problems)
            html += ProblemHtml(problem);
        html += "</ul>\n";
    }
    if (report.firstWithoutTime)
        html += fmt::format(
            "<p>{} times are not in a known format; the first of them:</p><ul>\n{}</ul>\n",
            Grouped(report.withoutTime), ProblemHtml(*report.firstWithoutTime));
    return html;
}

} // namespace CallRecordingUtils
