// What each rule did, and which ones did nothing.

#include <algorithm>

#include <fmt/format.h>

#include "records/page/Cells.h"
#include "records/page/Chart.h"
#include "records/page/Html.h"
#include "records/page/Sections.h"
#include "records/report/PeriodText.h"

namespace CallRecordingUtils {
namespace {

constexpr std::size_t kMostUnfolded = 25; // Rules that never applied.

std::string SidesOf(PageSource const& source, std::size_t index) {
    PageFacts::Sides const& sides = source.page.sides[index];
    return fmt::format("from {} to {}", Escaped(sides.from), Escaped(sides.to));
}

/// Where the rule stands in the last rules of the period.
std::string PositionOf(PageSource const& source, std::size_t index) {
    std::vector<RuleSpan> const& spans = source.facts.spans;
    return spans.empty() || spans[index].isStillThere ? std::to_string(index + 1) : "";
}

std::string SpanHtml(PageSource const& source, std::size_t index) {
    std::vector<RuleSpan> const& spans = source.facts.spans;
    if (spans.empty())
        return "";
    return "<br>in the file " + InFileText(spans[index]);
}

std::string TallyCells(PageSource const& source, Tally const& tally, std::uint64_t most) {
    return CallsCell(tally.calls) + ShareCell(tally.calls, source.report.all.calls) +
           BarCell(tally.calls, most) + TimesCell(tally) + WideCell(ExampleHtml(tally.example));
}

/// Why the rule decided no call.
std::string WhyNever(PageSource const& source, std::size_t index) {
    auto const why = source.page.whyNever.find(index);
    return source.Rules()[index].recording_rule_state != RULE_ENABLED ? "it is disabled"
           : why != source.page.whyNever.end()                        ? Escaped(why->second)
                                               : "it decided no call of these files";
}

} // namespace

std::string OutcomeHtml(RuleList const& rules, Decision decision) {
    if (decision == kNoRule)
        return "not recorded";
    Rule const& rule = rules[decision];
    if (ForbidsRecording(rule))
        return fmt::format("forbidden<br><small>{}</small>", RuleHtml(rule));
    std::string html = rule.record_to.empty() ? "no destination" : Escaped(rule.record_to);
    if (!rule.recording_duration.empty())
        html += ", duration " + Escaped(rule.recording_duration);
    return fmt::format("{}, type {}<br><small>{}</small>", html,
                       static_cast<int>(rule.call_recording_type), RuleHtml(rule));
}

std::string RulesSection(PageSource const& source) {
    std::uint64_t most = 0;
    for (Tally const& tally : source.report.byRule)
        most = std::max(most, tally.calls);
    HtmlTable table("rules", "Rules that decided calls, in their order",
                    {"#", "Rule", "#Calls", "#Share", "", "First and last", "Example"});
    for (std::size_t i = 0; i < source.Rules().size(); ++i) {
        Rule const& rule = source.Rules()[i];
        Tally const& tally = source.report.byRule[i];
        if (tally.calls == 0)
            continue;
        std::string const outcome = ForbidsRecording(rule) ? "never recorded"
                                    : rule.record_to.empty()
                                        ? "recorded to no destination"
                                        : "recorded to " + Escaped(rule.record_to);
        table.Add(
            Cell(PositionOf(source, i)) +
                NameCell(fmt::format("<b>{}</b>{}<br><small>{}<br>{}{}</small>", RuleHtml(rule),
                                     rule.recording_rule_state == RULE_ENABLED ? "" : " (disabled)",
                                     SidesOf(source, i), outcome, SpanHtml(source, i))) +
                TallyCells(source, tally, most),
            fmt::format(" id=\"rule-{}\"", i + 1));
    }
    table.Add(Cell("") + NameCell("<b>taken by no rule</b>") +
                  TallyCells(source, source.report.noRule, most),
              " id=\"rule-none\"");
    return Heading("The rules") + table.Html();
}

std::string NeverAppliedSection(PageSource const& source) {
    HtmlTable table("never", "Rules that decided no call", {"#", "Rule", "#Calls", "Why"});
    std::size_t count = 0;
    for (std::size_t i = 0; i < source.Rules().size(); ++i) {
        if (source.report.byRule[i].calls > 0)
            continue;
        ++count;
        table.Add(Cell(PositionOf(source, i)) +
                      NameCell(fmt::format("{}<br><small>{}{}</small>", RuleHtml(source.Rules()[i]),
                                           SidesOf(source, i), SpanHtml(source, i))) +
                      CallsCell(0) + WideCell(WhyNever(source, i)),
                  fmt::format(" id=\"rule-{}\" class=\"never\"", i + 1));
    }
    std::string html = Heading("Rules that never applied");
    if (count == 0)
        return html + "<p>None: every rule decided a call.</p>\n";
    if (source.page.lookedInto < count)
        html += fmt::format("<p>Why was looked into for the first {} of them.</p>\n",
                            Grouped(source.page.lookedInto));
    return html + Details(fmt::format("{} {} decided no call", Grouped(count),
                                      count == 1 ? "rule" : "rules"),
                          table.Html(), count <= kMostUnfolded);
}

} // namespace CallRecordingUtils
