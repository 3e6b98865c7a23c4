// The tables and sentences of a replay.

#include "output/ReplayText.h"

#include <fmt/format.h>

#include "output/RuleText.h"
#include "output/Screen.h"
#include "output/Table.h"
#include "records/report/PeriodText.h"
#include "records/report/Reading.h"
#include "records/report/ReconciliationReport.h"
#include "text/Printable.h"

namespace callrecordingctl {
namespace {

std::string Plural(std::uint64_t count, char const* noun) {
    return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

std::string ExampleText(std::optional<Example> const& example) {
    return example ? fmt::format("{} -> {}", example->from, example->to) : "";
}

std::string WhenText(std::optional<CallTime> time) {
    return time ? TimeText(*time) : "";
}

void PrintRules(ReplayReport const& report, ReplayFacts const& facts) {
    RuleList const& rules = facts.here.rules;
    std::vector<RuleSpan> const& spans = facts.spans;
    bool const hasTimes = report.all.first.has_value();
    std::vector<std::string> headers{"#", "ID", "STATE", "CALLS", "SHARE"};
    if (hasTimes)
        headers.insert(headers.end(), {"FIRST", "LAST"});
    headers.push_back("EXAMPLE");
    if (!spans.empty())
        headers.push_back("IN THE FILE");
    headers.insert(headers.end(), {"RECORD TO", "DESCRIPTION"});
    Table table(headers, hasTimes ? 7 : 5, 2);
    auto const add = [&](std::vector<std::string> row, Tally const& tally,
                         std::vector<std::string> const& rest) {
        row.insert(row.end(),
                   {std::to_string(tally.calls), Percent(tally.calls, report.all.calls)});
        if (hasTimes)
            row.insert(row.end(), {WhenText(tally.first), WhenText(tally.last)});
        row.push_back(ExampleText(tally.example));
        row.insert(row.end(), rest.begin(), rest.end());
        table.Add(row, tally.calls == 0 ? RowStyle::Pale : RowStyle::Plain);
    };
    for (std::size_t i = 0; i < rules.size(); ++i) {
        std::vector<std::string> rest{RecordToText(rules[i]), rules[i].description};
        if (!spans.empty())
            rest.insert(rest.begin(), InFileText(spans[i]));
        add({spans.empty() || spans[i].isStillThere ? std::to_string(i + 1) : "-",
             std::to_string(rules[i].callrecordingrule_id), StateText(rules[i])},
            report.byRule[i], rest);
    }
    add({"-", "-", "-"}, report.noRule,
        spans.empty() ? std::vector<std::string>{"", "taken by no rule"}
                      : std::vector<std::string>{"", "", "taken by no rule"});
    table.Print();
}

/// Who made an edit and, if wanted, what it changed.
void PrintEdit(EditFacts const& edit, bool withChanges) {
    std::string const who = edit.isOutside ? "changed outside the history, " + MadeText(edit)
                                           : edit.user + ": " + edit.command;
    PrintLines("  {}  {}{}{}\n", TimeText(edit.time.shown), Printable(who),
               edit.message.empty() ? "" : Printable(" (" + edit.message + ")"),
               edit.isCertain ? "" : "; perhaps not between the first and the last call");
    for (std::string const& change : edit.changes)
        if (withChanges)
            PrintLines("    {}\n", Printable(change));
}

/// Missing and unexpected recordings, by what decided the calls.
void PrintFaultyRecordings(Reconciliation const& reconciliation, RuleList const& rules) {
    Table table({"RECORDING", "CALLS", "ID", "RULE", "EXAMPLE"});
    bool isAny = false;
    for (Reconciliation::Outcome const outcome :
         {Reconciliation::kMissing, Reconciliation::kUnexpected})
        for (auto const& [decision, tally] : reconciliation.Of(outcome)) {
            isAny = true;
            table.Add(
                {kOutcomeNames[outcome], std::to_string(tally.calls),
                 IsRule(decision) ? std::to_string(rules[decision].callrecordingrule_id) : "-",
                 IsRule(decision)      ? rules[decision].description
                 : decision == kNoRule ? "taken by no rule"
                                       : "decided by the answer alone",
                 ExampleText(tally.example)});
        }
    if (isAny)
        table.Print();
}

void PrintReconciliation(ReplayReport const& report, RuleList const& rules) {
    Reconciliation const& reconciliation = report.reconciliation;
    if (!reconciliation.IsKnown())
        return;
    PrintLines("\n");
    for (std::string const& sentence : ReconciliationSentences(report))
        PrintLines("{}\n", sentence);
    PrintFaultyRecordings(reconciliation, rules);
    if (reconciliation.Cases().empty())
        return;
    PrintLines("\n");
    Table answers({"ANSWERED", "BY THE RULES", "RECORDED", "CALLS", "EXAMPLE"});
    for (auto const& [which, tally] : reconciliation.Cases()) {
        auto const& [answer, byRules, was] = which;
        answers.Add({AnswerWord(answer), ByRulesWord(byRules), WasRecordedWord(was),
                     std::to_string(tally.calls), ExampleText(tally.example)});
    }
    answers.Print();
}

void PrintTotals(ReplayReport const& report) {
    PrintLines("\n{} in {}", Plural(report.all.calls, "call"), Plural(report.files.size(), "file"));
    if (report.all.first)
        PrintLines(" from {} to {}", WhenText(report.all.first), WhenText(report.all.last));
    PrintLines(": {} to be recorded ({}), ", report.Recorded(),
               Percent(report.Recorded(), report.all.calls));
    if (report.forbidden.calls > 0)
        PrintLines("{} forbidden ({}), {} that no rule takes\n", report.forbidden.calls,
                   Percent(report.forbidden.calls, report.all.calls), report.noRule.calls);
    else
        PrintLines("{} not\n", report.noRule.calls);
    if (report.isInterrupted)
        PrintLines("interrupted: these figures do not cover all calls\n");
}

void PrintRulesAsked(ReplayReport const& report, ReplayFacts const& facts) {
    RulesAsked const& asked = facts.asked;
    if (asked.areOfTheirTime)
        PrintLines("calls are decided by the rules that the file held at their time\n");
    else if (!asked.asOf.empty())
        PrintLines("decided by the rules as of {}, state {}\n", asked.asOf,
                   facts.here.digest.substr(0, 8));
    else if (!facts.here.digest.empty())
        PrintLines("decided by the rules of now, state {}\n", facts.here.digest.substr(0, 8));
    std::pair<char const*, Tally const*> const tallies[] = {
        {"before the history of the rules begins", &report.withoutRulesBefore},
        {"without a time", &report.withoutRulesOfNoTime},
        {"of a time whose rules are not known", &report.withoutRulesNotKept}};
    for (auto const& [what, tally] : tallies)
        if (tally->calls > 0)
            PrintLines("not decided: {} {}\n", Plural(tally->calls, "call"), what);
    for (std::string const& sentence : UnknownSentences(facts.unknown))
        PrintLines("{}\n", Printable(sentence));
    if (facts.edits.empty() && facts.laterEdits == 0)
        return;
    PrintLines(
        "edits between the first and the last call: {}, later ones: {}{}\n",
        EditCountText(facts.edits), facts.laterEdits,
        asked.areOfTheirTime ? "" : "; --as-of history decides each call by the rules of its time");
    for (EditFacts const& edit : facts.edits)
        PrintEdit(edit, asked.areOfTheirTime);
}

void PrintNotRecorded(ReplayReport const& report) {
    Tally rest;
    std::vector<LeadingDigits::Group> const groups = report.noRuleByDigits.Groups(rest);
    std::string text;
    for (LeadingDigits::Group const& group : groups)
        text += fmt::format("{}{} {}", text.empty() ? "" : ", ",
                            group.digits.empty() ? "no digit" : group.digits, group.tally.calls);
    if (rest.calls > 0)
        text += fmt::format(", others {}", rest.calls);
    if (!text.empty())
        PrintLines("taken by no rule, by the leading digits of the number called: {}\n", text);
}

void PrintNeverApplied(ReplayReport const& report, RuleList const& rules) {
    std::string ids;
    for (std::size_t i = 0; i < rules.size(); ++i)
        if (report.byRule[i].calls == 0)
            ids += fmt::format("{}{}{}", ids.empty() ? "" : ", ", rules[i].callrecordingrule_id,
                               rules[i].recording_rule_state == RULE_ENABLED ? "" : " (off)");
    if (!ids.empty())
        PrintLines("never applied: {}\n", ids);
}

/// How the files were read.
void PrintReading(ReplayReport const& report) {
    for (std::string const& sentence : ReadingSentences(report.files))
        PrintLines("{}\n", Printable(sentence));
}

/// How the calls were asked about, and what was left out of their addresses.
void PrintQuestions(ReplayReport const& report) {
    if (report.all.calls > 0)
        PrintLines("how calls were asked about: {}\n", QuestionsText(report));
    std::string text;
    for (std::size_t i = 0; i < report.cleaned.size(); ++i)
        if (report.cleaned[i] > 0)
            text += fmt::format("{}{} {}", text.empty() ? "" : ", ", kCleaningWords[i],
                                report.cleaned[i]);
    if (!text.empty())
        PrintLines(
            "removed from addresses: {}; the telephone system may hand them over differently\n",
            text);
}

} // namespace

void PrintProblems(ReplayReport const& report) {
    if (report.unreadable > 0)
        PrintLines("{} could not be read{}\n", Plural(report.unreadable, "line"),
                   report.unreadable > report.problems.size() ? "; the first:" : ":");
    for (ReplayReport::Problem const& problem : report.problems)
        PrintLines("  {}\n",
                   Printable(fmt::format("{}:{}: {}", problem.file, problem.line, problem.reason)));
    if (report.firstWithoutTime)
        PrintLines(
            "{} not in a known format (see --time-format): {}\n",
            Plural(report.withoutTime, "time"),
            Printable(fmt::format("{}:{}: \"{}\"", report.firstWithoutTime->file,
                                  report.firstWithoutTime->line, report.firstWithoutTime->reason)));
}

std::string OutcomeText(Rule const* rule) {
    if (rule == nullptr)
        return "not recorded";
    std::string const description = rule->description.empty() ? "" : " (" + rule->description + ")";
    if (ForbidsRecording(*rule))
        return "forbidden" + description;
    std::string text = rule->record_to.empty() ? "no destination" : rule->record_to;
    if (rule->call_recording_type != CALL_RECORDING_TYPE_0)
        text += fmt::format(", type {}", static_cast<int>(rule->call_recording_type));
    if (!rule->recording_duration.empty())
        text += ", duration " + rule->recording_duration;
    return text + description;
}

void PrintDifferences(ReplayReport const& report, RuleList const& here, RuleList const& there,
                      ListNames const& names) {
    PrintLines("{} of {} decided differently by {}\n", report.different.calls,
               Plural(report.all.calls, "call"), Printable(names.others));
    if (report.different.calls == 0)
        return;
    auto const text = [](RuleList const& rules, Decision decision) {
        return OutcomeText(decision == kNoRule ? nullptr : &rules[decision]);
    };
    Table table({"CALLS", names.here, names.there, "EXAMPLE"});
    for (auto const& [pair, tally] : report.differences)
        table.Add({std::to_string(tally.calls), text(here, pair.first), text(there, pair.second),
                   ExampleText(tally.example)});
    if (report.moreDifferences.calls > 0)
        table.Add(
            {std::to_string(report.moreDifferences.calls), "of further pairs of rules", "", ""});
    table.Print();
}

void PrintReplay(ReplayReport const& report, ReplayFacts const& facts) {
    PrintRules(report, facts);
    PrintTotals(report);
    PrintRulesAsked(report, facts);
    PrintNotRecorded(report);
    PrintNeverApplied(report, facts.here.rules);
    PrintReading(report);
    PrintQuestions(report);
    PrintProblems(report);
    for (ClaimFacts const& claim : facts.claims)
        PrintLines("claim in line {} ({}): {}: {}\n", claim.line, claim.rules,
                   Printable(claim.text), Printable(claim.verdict));
    PrintReconciliation(report, facts.here.rules);
    if (facts.there) {
        PrintLines("\n");
        PrintDifferences(report, facts.here.rules, facts.there->rules,
                         {"HERE", "THERE", facts.there->path});
    }
}

} // namespace callrecordingctl
