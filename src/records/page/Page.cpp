// Puts the page together, section by section.

#include "records/page/Page.h"

#include <fmt/format.h>

#include "records/page/Cells.h"
#include "records/page/Chart.h"
#include "records/page/Html.h"
#include "records/page/PageStyle.h"
#include "records/page/Sections.h"

namespace CallRecordingUtils {

std::string Heading(char const* text) {
    return fmt::format("<h2>{}</h2>\n", text);
}

namespace {

/// "Call recording on pbx, 2026-11-02 to 2026-11-06, by /etc/quva-conf/telephony/callrecordingdb"
std::string TitleOf(PageSource const& source) {
    Tally const& all = source.report.all;
    std::string period;
    if (all.first) {
        std::string const first = TimeText(*all.first).substr(0, 10);
        std::string const last = TimeText(*all.last).substr(0, 10);
        period = first == last ? ", " + first : fmt::format(", {} to {}", first, last);
    }
    return fmt::format("Call recording on {}{}, by {}", source.page.system, period,
                       source.facts.here.path);
}

/// text as a string in a style sheet, where nothing may end the string or the sheet.
std::string StyleString(std::string const& text) {
    std::string string = "\"";
    for (char const c : text)
        if ((c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
            std::string_view(" ,.-_/:").find(c) != std::string_view::npos)
            string += c;
        else
            string += static_cast<unsigned char>(c) < 0x80
                          ? fmt::format("\\{:06x}", static_cast<unsigned char>(c))
                          : "?";
    return string + "\"";
}

std::string RuleFileHtml(char const* name, RuleFileFacts const& file, std::string const& rules) {
    return fmt::format("<dt>{}</dt><dd>{}{}<br><small>SHA-256 <code>{}</code></small></dd>\n", name,
                       Escaped(file.path), rules,
                       file.digest.empty() ? "none: there is no such file" : file.digest);
}

std::string FactsHtml(PageSource const& source) {
    auto const& [report, facts, page] = source;
    auto const count = [](RuleFileFacts const& file) {
        return fmt::format(", {} rules", file.rules.size());
    };
    std::string const rules =
        facts.asked.areOfTheirTime
            ? ", calls are decided by the rules of their time; the digest is that of the file now"
            : count(facts.here) +
                  (facts.asked.asOf.empty() ? ", as they are now" : ", as of " + facts.asked.asOf);
    std::string html = "<dl>\n" + RuleFileHtml("Rule file", facts.here, rules);
    if (facts.there)
        html += RuleFileHtml("Compared with", *facts.there, count(*facts.there));
    if (report.all.first)
        html += fmt::format("<dt>Calls from</dt><dd>{} to {}, zone {}</dd>\n",
                            TimeText(*report.all.first), TimeText(*report.all.last),
                            Escaped(page.zone));
    std::string options;
    for (std::string const& option : facts.options)
        options += (options.empty() ? "" : " ") + Escaped(option);
    html += fmt::format("<dt>Options</dt><dd>{}</dd>\n<dt>Made</dt><dd>{} by {}</dd>\n</dl>\n",
                        options.empty() ? "none" : options, Escaped(page.made), Escaped(page.by));
    if (report.isInterrupted)
        html += "<p class=\"warning\">The replay was interrupted: the figures do not cover all "
                "calls.</p>\n";
    return html;
}

std::string Figure(char const* id, std::uint64_t count, std::string const& text) {
    return fmt::format("<li id=\"{}\">{}{}</li>\n", id, DataElement(count), text);
}

std::string FiguresHtml(PageSource const& source) {
    ReplayReport const& report = source.report;
    std::uint64_t const all = report.all.calls;
    std::string html = "<ul class=\"figures\">\n";
    if (report.reconciliation.IsKnown()) {
        html += Figure("missing", report.reconciliation.Total(Reconciliation::kMissing).calls,
                       "recordings missing");
        html += Figure("unexpected", report.reconciliation.Total(Reconciliation::kUnexpected).calls,
                       "recordings unexpected");
        if (std::uint64_t const calls =
                report.reconciliation.Total(Reconciliation::kUndecided).calls)
            html +=
                Figure("undecided", calls, "neither the rules nor an answer say whether to record");
    }
    auto const share = [&](char const* id, std::uint64_t count, char const* what) {
        html += Figure(id, count, fmt::format("{}, {}", what, PercentHtml(count, all)));
    };
    html += Figure("calls", all, "calls");
    share("recorded", report.Recorded(), "to be recorded");
    share("forbidden", report.forbidden.calls, "forbidden");
    share("not-recorded", report.noRule.calls, "taken by no rule");
    if (source.facts.asked.areOfTheirTime)
        share("without-rules", report.WithoutRules(),
              "not decided: the rules of their time are not known");
    html += Figure("unreadable", report.unreadable, "lines not read");
    if (source.facts.there)
        html += Figure("different", report.different.calls, "decided differently");
    return html + "</ul>\n";
}

} // namespace

std::string PageOf(ReplayReport const& report, ReplayFacts const& facts, PageFacts const& page) {
    PageSource const source{report, facts, page};
    std::string const title = TitleOf(source);
    std::string html = "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
                       "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
                       "<title>" +
                       Escaped(title) + "</title>\n<link rel=\"icon\" href=\"data:,\">\n<style>";
    html += kPageStyle;
    html += fmt::format("@page {{ @top-left {{ content: {}; }} }}\n", StyleString(title));
    html += "</style>\n</head>\n<body>\n<h1>" + Escaped(title) + "</h1>\n";
    html += FactsHtml(source) + FiguresHtml(source) + ReconciliationSection(source) +
            RulesSection(source);
    std::string const chart = ChartOf(report, facts.here.rules);
    if (!chart.empty())
        html += Heading("Calls over time") + chart;
    html += EditsSection(source) + ClaimsSection(source) + NeverAppliedSection(source) +
            NotRecordedSection(source) + DifferencesSection(source) + ReadingSection(source);
    return html + "</body>\n</html>\n";
}

} // namespace CallRecordingUtils
