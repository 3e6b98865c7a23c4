// Turns a report into JSON.

#include "records/report/ReportJson.h"

#include <fmt/format.h>

#include "records/report/Reading.h"
#include "records/report/ReconciliationReport.h"
#include "json/Names.h"
#include "json/RuleJson.h"

namespace CallRecordingUtils {
using nlohmann::ordered_json;

namespace {

ordered_json TimeToJson(std::optional<CallTime> time) {
    return time ? ordered_json(TimeText(*time)) : ordered_json();
}

} // namespace

ordered_json ExampleToJson(std::optional<Example> const& example) {
    if (!example)
        return nullptr;
    return {{kCallFrom, example->from},
            {kCallTo, example->to},
            {"time", TimeToJson(example->time)},
            {"file", example->file},
            {"line", example->line}};
}

ordered_json DecisionToJson(RuleList const& rules, Decision decision) {
    if (!IsRule(decision))
        return nullptr;
    return OutcomeToJson(rules[decision], decision + 1);
}

namespace {

void AddTally(ordered_json& json, Tally const& tally, std::uint64_t all) {
    json["calls"] = tally.calls;
    json["share"] = Share(tally.calls, all);
    json["first"] = TimeToJson(tally.first);
    json["last"] = TimeToJson(tally.last);
    json["example"] = ExampleToJson(tally.example);
}

ordered_json BreaksToJson(RuleSpan const& span) {
    auto list = ordered_json::array();
    for (auto const& [since, until] : span.breaks)
        list.push_back({{"since", TimeText(since)}, {"until", TimeText(until)}});
    return list;
}

ordered_json RulesToJson(ReplayReport const& report, ReplayFacts const& facts) {
    RuleList const& rules = facts.here.rules;
    auto list = ordered_json::array();
    for (std::size_t i = 0; i < rules.size(); ++i) {
        ordered_json rule = DecisionToJson(rules, i);
        rule[NameOf(RuleMember::Enabled)] = rules[i].recording_rule_state == RULE_ENABLED;
        if (!facts.spans.empty()) {
            if (!facts.spans[i].isStillThere)
                rule[NameOf(RuleMember::Position)] = nullptr;
            rule["since"] = TimeToJson(facts.spans[i].since);
            rule["until"] = TimeToJson(facts.spans[i].until);
            rule["breaks"] = BreaksToJson(facts.spans[i]);
        }
        AddTally(rule, report.byRule[i], report.all.calls);
        list.push_back(rule);
    }
    return list;
}

ordered_json NotRecordedToJson(ReplayReport const& report) {
    ordered_json json;
    AddTally(json, report.noRule, report.all.calls);
    auto list = ordered_json::array();
    Tally rest;
    for (LeadingDigits::Group const& group : report.noRuleByDigits.Groups(rest))
        list.push_back({{"digits", group.digits},
                        {"calls", group.tally.calls},
                        {"example", ExampleToJson(group.tally.example)}});
    json["by_leading_digits"] = list;
    json["by_leading_digits_others"] = rest.calls;
    return json;
}

ordered_json NeverApplied(ReplayReport const& report, RuleList const& rules) {
    auto list = ordered_json::array();
    for (std::size_t i = 0; i < rules.size(); ++i)
        if (report.byRule[i].calls == 0)
            list.push_back(rules[i].callrecordingrule_id);
    return list;
}

ordered_json ProblemToJson(ReplayReport::Problem const& problem) {
    return {{"file", problem.file}, {"line", problem.line}, {"reason", problem.reason}};
}

ordered_json FilesToJson(ReplayReport const& report) {
    auto list = ordered_json::array();
    for (ReplayReport::File const& file : report.files)
        list.push_back(
            {{"path", file.path},
             {"sha256", file.digest.empty() ? ordered_json() : ordered_json(file.digest)},
             {"calls", file.calls},
             {"unreadable", file.unreadable},
             {"reading", ToJson(file.reading)}});
    return list;
}

ordered_json RulesOfToJson(RulesAsked const& asked) {
    return asked.areOfTheirTime ? "history" : asked.asOf.empty() ? "now" : asked.asOf;
}

ordered_json EditsToJson(std::vector<EditFacts> const& edits) {
    auto list = ordered_json::array();
    for (EditFacts const& edit : edits) {
        ordered_json entry{{"number", edit.number},     {"time", TimeText(edit.time.shown)},
                           {"earliest", nullptr},       {"outside", edit.isOutside},
                           {"certain", edit.isCertain}, {"user", edit.user},
                           {"command", edit.command},   {"message", edit.message},
                           {"changes", edit.changes}};
        if (edit.earliest)
            entry["earliest"] = TimeText(edit.earliest->shown);
        list.push_back(entry);
    }
    return list;
}

ordered_json ClaimsToJson(std::vector<ClaimFacts> const& claims) {
    auto list = ordered_json::array();
    for (ClaimFacts const& claim : claims)
        list.push_back({{"line", claim.line},
                        {"text", claim.text},
                        {"rules_of", claim.rules},
                        {"proved", claim.isProved},
                        {"reason", claim.verdict}});
    return list;
}

ordered_json StatesToJson(std::vector<EraFacts> const& eras) {
    auto list = ordered_json::array();
    for (EraFacts const& era : eras) {
        ordered_json const until = era.to ? ordered_json(TimeText(era.to->shown)) : ordered_json();
        list.push_back({{"since", TimeText(era.from->shown)},
                        {"until", until},
                        {"sha256", era.digest},
                        {"reason", era.problem}});
    }
    return list;
}

ordered_json WithoutRulesToJson(ReplayReport const& report) {
    ordered_json json;
    std::pair<char const*, Tally const*> const tallies[] = {
        {"before_history", &report.withoutRulesBefore},
        {"without_time", &report.withoutRulesOfNoTime},
        {"not_kept", &report.withoutRulesNotKept}};
    for (auto const& [name, tally] : tallies) {
        json[name] = ordered_json::object();
        AddTally(json[name], *tally, report.all.calls);
    }
    return json;
}

ordered_json RuleFileToJson(RuleFileFacts const& file) {
    ordered_json json{{"path", file.path}, {"sha256", nullptr}, {"rules", file.rules.size()}};
    if (!file.digest.empty())
        json["sha256"] = file.digest;
    return json;
}

} // namespace

ordered_json UnreadableToJson(ReplayReport const& report) {
    auto list = ordered_json::array();
    for (ReplayReport::Problem const& problem : report.problems)
        list.push_back(ProblemToJson(problem));
    return {{"lines", report.unreadable}, {"first", list}};
}

double Share(std::uint64_t calls, std::uint64_t all) {
    return all > 0 ? static_cast<double>(calls) / static_cast<double>(all) : 0;
}

std::string Percent(std::uint64_t calls, std::uint64_t all) {
    double const percent = 100 * Share(calls, all);
    return calls > 0 && percent < 0.05 ? "<0.1 %" : fmt::format("{:.1f} %", percent);
}

std::string QuestionsText(ReplayReport const& report) {
    std::pair<char const*, std::uint64_t> const questions[] = {{"parties", report.asParties},
                                                               {"typed", report.asTyped},
                                                               {"one side typed", report.asBoth}};
    std::string text;
    for (auto const& [name, calls] : questions)
        if (calls > 0)
            text += fmt::format("{}{} {}", text.empty() ? "" : ", ", name, calls);
    return text;
}

ordered_json DifferencesToJson(ReplayReport const& report, RuleList const& here,
                               RuleList const& there) {
    auto groups = ordered_json::array();
    for (auto const& [pair, tally] : report.differences)
        groups.push_back({{"calls", tally.calls},
                          {"here", DecisionToJson(here, pair.first)},
                          {"there", DecisionToJson(there, pair.second)},
                          {"example", ExampleToJson(tally.example)}});
    return {{"calls", report.different.calls},
            {"share", Share(report.different.calls, report.all.calls)},
            {"groups", groups},
            {"others", report.moreDifferences.calls}};
}

ordered_json ToJson(ReplayReport const& report, ReplayFacts const& facts) {
    RuleList const& rules = facts.here.rules;
    auto cleaned = ordered_json::object();
    for (std::size_t i = 0; i < report.cleaned.size(); ++i)
        cleaned[kCleaningWords[i]] = report.cleaned[i];
    ordered_json json{{"rule_file", RuleFileToJson(facts.here)},
                      {"files", FilesToJson(report)},
                      {"calls", report.all.calls},
                      {"first", TimeToJson(report.all.first)},
                      {"last", TimeToJson(report.all.last)},
                      {"rules_of", RulesOfToJson(facts.asked)},
                      {"edits", EditsToJson(facts.edits)},
                      {"edits_since", facts.laterEdits},
                      {"states_not_known", StatesToJson(facts.unknown)},
                      {"claims", ClaimsToJson(facts.claims)},
                      {"recorded", report.Recorded()},
                      {"forbidden", report.forbidden.calls},
                      {"rules", RulesToJson(report, facts)},
                      {"not_recorded", NotRecordedToJson(report)},
                      {"never_applied", NeverApplied(report, rules)},
                      {"without_rules", nullptr},
                      {"reconciliation", ReconciliationToJson(report, rules)},
                      {"asked",
                       {{"parties", report.asParties},
                        {"typed", report.asTyped},
                        {"one_side_typed", report.asBoth}}},
                      {"cleaned", cleaned},
                      {"unreadable", UnreadableToJson(report)},
                      {"unreadable_times", report.withoutTime},
                      {"against", nullptr},
                      {"differences", nullptr},
                      {"interrupted", report.isInterrupted}};
    if (facts.asked.areOfTheirTime) {
        json["rule_file"]["rules"] = nullptr; // Of all the states that it had.
        json["without_rules"] = WithoutRulesToJson(report);
    }
    if (facts.there) {
        json["against"] = RuleFileToJson(*facts.there);
        json["differences"] = DifferencesToJson(report, rules, facts.there->rules);
    }
    return json;
}

} // namespace CallRecordingUtils
