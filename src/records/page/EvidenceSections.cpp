// What was recorded against what should have been, who changed the rules, and what was claimed of
// them.

#include <algorithm>

#include <fmt/format.h>

#include "records/page/Cells.h"
#include "records/page/Chart.h"
#include "records/page/Html.h"
#include "records/page/Sections.h"
#include "records/report/PeriodText.h"
#include "records/report/ReconciliationReport.h"

namespace CallRecordingUtils {
namespace {

constexpr char const* kOutcomeHtml[Reconciliation::kOutcomeCount] = {
    "recorded, as it should be",
    "not recorded, as it should be",
    "missing",
    "unexpected",
    "not known",
    "neither the rules nor an answer say whether to record"};

std::string AnswersHtml(Reconciliation const& reconciliation) {
    if (reconciliation.Cases().empty())
        return "";
    HtmlTable table("answers", "What was answered, what the rules say, and what was recorded",
                    {"Answered", "By the rules", "Recorded", "#Calls", "Example"});
    for (auto const& [which, tally] : reconciliation.Cases()) {
        auto const& [answer, byRules, was] = which;
        table.Add(Cell(AnswerWord(answer)) + Cell(ByRulesWord(byRules)) +
                  Cell(WasRecordedWord(was)) + CallsCell(tally.calls) +
                  WideCell(ExampleHtml(tally.example)));
    }
    return table.Html();
}

/// "2026-11-12 10:00:00" or, from outside, the time between which and this it was made.
std::string WhenHtml(EditFacts const& edit) {
    return fmt::format("{}{}", edit.isOutside ? MadeText(edit) : TimeText(edit.time.shown),
                       edit.isCertain ? "" : ", perhaps not between the first and the last call");
}

} // namespace

std::string ReconciliationSection(PageSource const& source) {
    Reconciliation const& reconciliation = source.report.reconciliation;
    if (!reconciliation.IsKnown())
        return "";
    HtmlTable table("reconciliation", "Missing and unexpected recordings first",
                    {"Recording", "#Calls", "Rule", "First and last", "Example"});
    for (Reconciliation::Outcome const outcome :
         {Reconciliation::kMissing, Reconciliation::kUnexpected, Reconciliation::kUndecided,
          Reconciliation::kUnknown, Reconciliation::kRecorded, Reconciliation::kNotRecorded})
        for (auto const& [decision, tally] : reconciliation.Of(outcome))
            table.Add(Cell(kOutcomeHtml[outcome]) + CallsCell(tally.calls) +
                          WideCell(IsRule(decision)      ? RuleHtml(source.Rules()[decision])
                                   : decision == kNoRule ? "taken by no rule"
                                                         : "the rules of its time are not known") +
                          TimesCell(tally) + WideCell(ExampleHtml(tally.example)),
                      fmt::format(" class=\"{}\"", kOutcomeNames[outcome]));
    std::string sentences;
    for (std::string const& sentence : ReconciliationSentences(source.report))
        sentences += "<p>" + Escaped(sentence) + "</p>\n";
    return Heading("What was recorded, against what should have been") + sentences + table.Html() +
           AnswersHtml(reconciliation);
}

std::string EditsSection(PageSource const& source) {
    ReplayFacts const& facts = source.facts;
    std::string html = Heading("Edits of the rules in this time");
    for (std::string const& sentence : UnknownSentences(facts.unknown))
        html += "<p class=\"warning\">Note: " + Escaped(sentence) + ".</p>\n";
    if (facts.edits.empty())
        return html + "<p>None that the history has.</p>\n";
    bool const isAnyCertain = std::any_of(facts.edits.begin(), facts.edits.end(),
                                          [](EditFacts const& edit) { return edit.isCertain; });
    if (!facts.asked.areOfTheirTime)
        html +=
            fmt::format("<p class=\"warning\">The rules {} in this time, and the calls were not "
                        "decided by the rules of their time.</p>\n",
                        isAnyCertain ? "changed" : "may have changed");
    HtmlTable table("edits", "Who changed what", {"When", "Who", "Changes"});
    for (EditFacts const& edit : facts.edits) {
        std::string changes;
        for (std::string const& change : edit.changes)
            changes += (changes.empty() ? "" : "<br>") + Escaped(change);
        table.Add(
            Cell(WhenHtml(edit)) +
            WideCell(edit.isOutside
                         ? "outside the history"
                         : fmt::format("{}<br><small>{}{}</small>", Escaped(edit.user),
                                       Escaped(edit.command),
                                       edit.message.empty() ? "" : ": " + Escaped(edit.message))) +
            WideCell(changes));
    }
    return html + table.Html();
}

std::string ClaimsSection(PageSource const& source) {
    if (source.page.policy.empty())
        return "";
    HtmlTable table("claims", "Claims of " + Escaped(source.page.policy),
                    {"Claim", "Rules", "Proved"});
    for (ClaimFacts const& claim : source.facts.claims)
        table.Add(
            WideCell(fmt::format("{}<br><small>line {}</small>", Escaped(claim.text), claim.line)) +
                WideCell(Escaped(claim.rules)) + WideCell(Escaped(claim.verdict)),
            claim.isProved ? "" : " class=\"missing\"");
    return Heading("Claims about these rules") + table.Html();
}

} // namespace CallRecordingUtils
