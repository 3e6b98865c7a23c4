// Puts the page together, section by section.

#include "records/page/Page.h"

#include <algorithm>

#include <fmt/format.h>

#include "records/page/Chart.h"
#include "records/page/Html.h"
#include "records/page/PageStyle.h"

namespace CallRecordingUtils {
namespace {

/// The percent sign stays on the line of its number.
std::string PercentHtml(std::uint64_t calls, std::uint64_t all) {
    std::string const text = Percent(calls, all);
    return Escaped(text.substr(0, text.size() - 2)) + "&nbsp;%";
}

std::string BarCell(std::uint64_t calls, std::uint64_t most) {
    if (calls == 0 || calls > most)
        return "<td class=\"bar\"></td>";
    return fmt::format("<td class=\"bar\"><i style=\"width:{:.2f}%\"></i></td>",
                       100 * Share(calls, most));
}

std::string ExampleHtml(std::optional<Example> const& example) {
    if (!example)
        return "";
    return fmt::format("{} &rarr; {}<br><small>{}:{}</small>", Escaped(example->from),
                       Escaped(example->to), Escaped(example->file), example->line);
}

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

class Page {
  public:
    Page(ReplayReport const& report, ReplayFacts const& facts, PageFacts const& page)
        : report_(report), facts_(facts), page_(page), rules_(facts.here.rules) {
        for (Tally const& tally : report.byRule)
            most_ = std::max(most_, tally.calls);
    }

    std::string Html() {
        html_ = "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
                "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
                "<title>What the call-recording rules did</title>\n<link rel=\"icon\" "
                "href=\"data:,\">\n<style>";
        html_ += kPageStyle;
        html_ += "</style>\n</head>\n<body>\n<h1>What the call-recording rules did</h1>\n";
        Facts();
        Figures();
        Rules();
        OverTime();
        NeverApplied();
        NotRecorded();
        Differences();
        Reading();
        html_ += "</body>\n</html>\n";
        return std::move(html_);
    }

  private:
    void Add(std::string const& html) { html_ += html + "\n"; }
    void Heading(char const* text) { Add(fmt::format("<h2>{}</h2>", text)); }

    void RuleFile(char const* name, RuleFileFacts const& file) {
        Add(fmt::format(
            "<dt>{}</dt><dd>{}, {} rules<br><small>SHA-256 <code>{}</code></small></dd>", name,
            Escaped(file.path), file.rules.size(),
            file.digest.empty() ? "none: there is no such file" : file.digest));
    }

    void Facts() {
        Add("<dl>");
        RuleFile("Rule file", facts_.here);
        if (facts_.there)
            RuleFile("Compared with", *facts_.there);
        Add("<dt>Call files</dt><dd>");
        for (ReplayReport::File const& file : report_.files)
            Add(fmt::format(
                "{}: {} calls{}<br>", file.path == "-" ? "standard input" : Escaped(file.path),
                Grouped(file.calls),
                file.unreadable > 0 ? fmt::format(", {} lines not read", Grouped(file.unreadable))
                                    : ""));
        Add("</dd>");
        if (report_.all.first)
            Add(fmt::format("<dt>Calls from</dt><dd>{} to {}</dd>", TimeText(*report_.all.first),
                            TimeText(*report_.all.last)));
        Add(fmt::format("<dt>Made</dt><dd>{} by {}</dd></dl>", Escaped(page_.made),
                        Escaped(page_.by)));
        if (report_.isInterrupted)
            Add("<p class=\"warning\">The replay was interrupted: the figures do not cover all "
                "calls.</p>");
    }

    void Figure(char const* id, std::uint64_t count, std::string const& text) {
        Add(fmt::format("<li id=\"{}\">{}{}</li>", id, DataElement(count), text));
    }

    void Figures() {
        std::uint64_t const all = report_.all.calls;
        std::uint64_t const recorded = report_.Recorded();
        std::uint64_t const none = report_.noRule.calls;
        std::uint64_t const forbidden = report_.forbidden.calls;
        Add("<ul class=\"figures\">");
        Figure("calls", all, "calls");
        Figure("recorded", recorded, "recorded, " + PercentHtml(recorded, all));
        Figure("forbidden", forbidden, "forbidden, " + PercentHtml(forbidden, all));
        Figure("not-recorded", none, "taken by no rule, " + PercentHtml(none, all));
        Figure("unreadable", report_.unreadable, "lines not read");
        if (facts_.there)
            Figure("different", report_.different.calls, "decided differently");
        Add("</ul>");
    }

    void TallyCells(Tally const& tally) {
        std::string const times = tally.first
                                      ? fmt::format("<span class=\"time\">{}</span><br><span "
                                                    "class=\"time\">{}</span>",
                                                    TimeText(*tally.first), TimeText(*tally.last))
                                      : "";
        Add(fmt::format("<td class=\"number\" data-name=\"Calls\">{}</td><td "
                        "class=\"number\">{}</td>{}<td class=\"wide\">{}</td><td "
                        "class=\"wide\">{}</td></tr>",
                        DataElement(tally.calls), PercentHtml(tally.calls, report_.all.calls),
                        BarCell(tally.calls, most_), times, ExampleHtml(tally.example)));
    }

    std::string SidesOf(std::size_t index) const {
        return fmt::format("from {} to {}", Escaped(page_.sides[index].from),
                           Escaped(page_.sides[index].to));
    }

    void Rules() {
        Heading("The rules, in order");
        Add("<table><thead><tr><th>#</th><th>Rule</th><th class=\"number\">Calls</th><th "
            "class=\"number\">Share</th><th></th><th>First and last</th><th>Example</th></tr>"
            "</thead><tbody>");
        for (std::size_t i = 0; i < rules_.size(); ++i) {
            Rule const& rule = rules_[i];
            Tally const& tally = report_.byRule[i];
            bool const isOn = rule.recording_rule_state == RULE_ENABLED;
            Add(fmt::format(
                "<tr id=\"rule-{}\"{}><td>{}</td><td class=\"wide name\"><b>{}</b>{}<br>"
                "<small>{}<br>{}</small></td>",
                i + 1, tally.calls == 0 ? " class=\"never\"" : "", i + 1, RuleHtml(rule),
                isOn ? "" : " (disabled)", SidesOf(i),
                ForbidsRecording(rule)   ? "never recorded"
                : rule.record_to.empty() ? "recorded to no destination"
                                         : "recorded to " + Escaped(rule.record_to)));
            TallyCells(tally);
        }
        Add("<tr id=\"rule-none\"><td></td><td class=\"wide name\"><b>taken by no rule</b></td>");
        TallyCells(report_.noRule);
        Add("</tbody></table>");
    }

    void OverTime() {
        std::string const chart = ChartOf(report_.timeline, rules_);
        if (chart.empty())
            return;
        Heading("Calls over time");
        Add(chart);
    }

    void NeverApplied() {
        Heading("Rules that never applied");
        std::string rows;
        for (std::size_t i = 0; i < rules_.size(); ++i) {
            if (report_.byRule[i].calls > 0)
                continue;
            auto const why = page_.whyNever.find(i);
            rows += fmt::format(
                "<tr><td>{}</td><td class=\"wide name\">{}<br><small>{}</small></td><td "
                "class=\"wide\">{}</td></tr>\n",
                i + 1, RuleHtml(rules_[i]), SidesOf(i),
                rules_[i].recording_rule_state != RULE_ENABLED ? "it is disabled"
                : why != page_.whyNever.end()                  ? Escaped(why->second)
                                              : "it decided no call of these files");
        }
        Add(rows.empty() ? "<p>None: every rule decided a call.</p>"
                         : "<table id=\"never\"><thead><tr><th>#</th><th>Rule</th><th>Why</th></tr>"
                           "</thead><tbody>" +
                               rows + "</tbody></table>");
    }

    void NotRecorded() {
        Heading("Calls that no rule takes");
        if (report_.noRule.calls == 0)
            return Add("<p>None.</p>");
        Add("<p>By the leading digits of the number called.</p>"
            "<table id=\"digits\"><thead><tr><th>Digits</th><th class=\"number\">Calls</th><th "
            "class=\"number\">Share</th><th></th><th>Example</th></tr></thead><tbody>");
        Tally rest;
        std::vector<LeadingDigits::Group> groups = report_.noRuleByDigits.Groups(rest);
        if (rest.calls > 0)
            groups.push_back({"others", rest});
        std::uint64_t const all = report_.noRule.calls;
        for (LeadingDigits::Group const& group : groups)
            Add(fmt::format("<tr><td>{}</td><td class=\"number\" data-name=\"Calls\">{}</td><td "
                            "class=\"number\">{}</td>{}<td class=\"wide\">{}</td></tr>",
                            group.digits.empty() ? "no digits" : Escaped(group.digits),
                            DataElement(group.tally.calls), PercentHtml(group.tally.calls, all),
                            BarCell(group.tally.calls, groups.front().tally.calls),
                            ExampleHtml(group.tally.example)));
        Add("</tbody></table>");
    }

    void Differences() {
        if (!facts_.there)
            return;
        Heading("What the other rules would have done");
        Add(fmt::format("<p>{} of {} calls are decided differently by {}.</p>",
                        Grouped(report_.different.calls), Grouped(report_.all.calls),
                        Escaped(facts_.there->path)));
        if (report_.different.calls == 0)
            return;
        Add("<table id=\"differences\"><thead><tr><th class=\"number\">Calls</th><th>Here</th><th>"
            "There</th><th>Example</th></tr></thead><tbody>");
        for (auto const& [pair, tally] : report_.differences)
            Add(fmt::format(
                "<tr><td class=\"number\" data-name=\"Calls\">{}</td><td class=\"wide\" "
                "data-name=\"Here\">{}</td><td class=\"wide\" data-name=\"There\">{}"
                "</td><td class=\"wide\">{}</td></tr>",
                DataElement(tally.calls), OutcomeHtml(rules_, pair.first),
                OutcomeHtml(facts_.there->rules, pair.second), ExampleHtml(tally.example)));
        if (report_.moreDifferences.calls > 0)
            Add(fmt::format(
                "<tr><td class=\"number\">{}</td><td>of further pairs of rules</td><td></td><td>"
                "</td></tr>",
                DataElement(report_.moreDifferences.calls)));
        Add("</tbody></table>");
    }

    void Problem(ReplayReport::Problem const& problem) {
        Add(fmt::format("<li>{}:{}: {}</li>", Escaped(problem.file), problem.line,
                        Escaped(problem.reason)));
    }

    void Reading() {
        Heading("How the call files were read");
        if (report_.all.calls > 0)
            Add(fmt::format("<p>How calls were asked about: {}.</p>", QuestionsText(report_)));
        std::string cleaned;
        for (std::size_t i = 0; i < report_.cleaned.size(); ++i)
            if (report_.cleaned[i] > 0)
                cleaned += fmt::format("{}{} {}", cleaned.empty() ? "" : ", ", kCleaningWords[i],
                                       Grouped(report_.cleaned[i]));
        Add(cleaned.empty()
                ? "<p>Addresses were taken as they are.</p>"
                : fmt::format(
                      "<p>Removed from addresses: {}. The telephone system may hand them over "
                      "differently.</p>",
                      cleaned));
        if (report_.unreadable > 0) {
            Add(fmt::format("<p>{} lines could not be read; the first of them:</p><ul>",
                            Grouped(report_.unreadable)));
            for (ReplayReport::Problem const& problem : report_.problems)
                Problem(problem);
            Add("</ul>");
        }
        if (report_.firstWithoutTime) {
            Add(fmt::format("<p>{} times are not in a known format; the first of them:</p><ul>",
                            Grouped(report_.withoutTime)));
            Problem(*report_.firstWithoutTime);
            Add("</ul>");
        }
    }

    ReplayReport const& report_;
    ReplayFacts const& facts_;
    PageFacts const& page_;
    RuleList const& rules_;
    std::uint64_t most_ = 0; // Calls of the rule with the longest bar.
    std::string html_;
};

} // namespace

std::string PageOf(ReplayReport const& report, ReplayFacts const& facts, PageFacts const& page) {
    return Page(report, facts, page).Html();
}

} // namespace CallRecordingUtils
