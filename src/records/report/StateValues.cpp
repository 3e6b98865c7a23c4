// Writes and reads what was counted.

#include "records/report/StateValues.h"

#include <stdexcept>

namespace CallRecordingUtils {
namespace {

using nlohmann::json;

json Put(Tally const& tally) {
    if (tally.calls == 0)
        return nullptr;
    Example const& example = *tally.example;
    return {tally.calls,
            PutOptional(tally.first),
            PutOptional(tally.last),
            ToUtf8(example.from),
            ToUtf8(example.to),
            PutOptional(example.time),
            ToUtf8(example.file),
            example.line,
            example.place};
}

Tally GetTally(json const& state) {
    Tally tally;
    if (state.is_null())
        return tally;
    tally.calls = state.at(0);
    tally.first = GetTime(state.at(1));
    tally.last = GetTime(state.at(2));
    tally.example = {GetText(state.at(3)), GetText(state.at(4)), GetTime(state.at(5)),
                     GetText(state.at(6)), state.at(7),          state.at(8)};
    return tally;
}

json Put(ReplayReport::Problem const& problem) {
    return {ToUtf8(problem.file), problem.line, ToUtf8(problem.reason), problem.place};
}

ReplayReport::Problem GetProblem(json const& state) {
    return {GetText(state.at(0)), state.at(1), GetText(state.at(2)), state.at(3)};
}

json Put(LeadingDigits const& digits) {
    json state = json::object();
    for (auto const& [prefix, tally] : digits.Counts())
        state[prefix] = Put(tally);
    return state;
}

LeadingDigits GetDigits(json const& state) {
    LeadingDigits digits;
    for (auto const& [prefix, tally] : state.items())
        digits.Add(prefix, GetTally(tally));
    return digits;
}

json Put(Timeline const& timeline) {
    json stretches = json::array();
    for (auto const& [begin, counts] : timeline.Stretches())
        stretches.push_back({begin, json(counts)});
    return {{"width", timeline.Width()}, {"outside", timeline.Outside()}, {"stretches", stretches}};
}

Timeline GetTimeline(json const& state) {
    Timeline timeline;
    timeline.WidenToWidth(state.at("width"));
    timeline.AddOutside(state.at("outside"));
    for (json const& stretch : state.at("stretches"))
        timeline.AddStretch(stretch.at(0), stretch.at(1).get<Timeline::Counts>());
    return timeline;
}

json Put(CallReading const& reading) {
    return {reading.format,
            reading.title,
            reading.isGuessed,
            reading.isDocumented,
            PutTexts({reading.columns.begin(), reading.columns.end()}),
            PutTexts(reading.conditions),
            ToUtf8(reading.distinct),
            reading.leftOut,
            PutTexts(reading.notes)};
}

CallReading GetReading(json const& state) {
    CallReading reading;
    reading.format = state.at(0);
    reading.title = state.at(1);
    reading.isGuessed = state.at(2);
    reading.isDocumented = state.at(3);
    for (std::size_t i = 0; i < kColumnCount; ++i)
        reading.columns[i] = GetText(state.at(4).at(i));
    reading.conditions = GetTexts(state.at(5));
    reading.distinct = GetText(state.at(6));
    reading.leftOut = state.at(7);
    reading.notes = GetTexts(state.at(8));
    return reading;
}

json PutFiles(std::vector<ReplayReport::File> const& files) {
    json state = json::array();
    for (ReplayReport::File const& file : files)
        state.push_back(
            {ToUtf8(file.path), file.calls, file.unreadable, Put(file.reading), file.digest});
    return state;
}

std::vector<ReplayReport::File> GetFiles(json const& state) {
    std::vector<ReplayReport::File> files;
    for (json const& file : state)
        files.push_back(
            {GetText(file.at(0)), file.at(1), file.at(2), GetReading(file.at(3)), file.at(4)});
    return files;
}

json Put(Reconciliation const& reconciliation) {
    json outcomes = json::array();
    for (std::size_t i = 0; i < Reconciliation::kOutcomeCount; ++i)
        for (auto const& [decision, tally] : reconciliation.Of(Reconciliation::Outcome(i)))
            outcomes.push_back({i, decision, Put(tally)});
    json cases = json::array();
    for (auto const& [which, tally] : reconciliation.Cases())
        cases.push_back(
            {std::get<0>(which), PutOptional(std::get<1>(which)), std::get<2>(which), Put(tally)});
    return {outcomes, cases, Put(reconciliation.lost)};
}

Reconciliation GetReconciliation(json const& state) {
    Reconciliation reconciliation;
    for (json const& outcome : state.at(0)) {
        auto const which = outcome.at(0).get<std::size_t>();
        if (which >= Reconciliation::kOutcomeCount)
            throw std::runtime_error("it has calls that are neither recorded nor not");
        reconciliation.TallyOf(Reconciliation::Outcome(which), outcome.at(1)) =
            GetTally(outcome.at(2));
    }
    for (json const& entry : state.at(1)) {
        Reconciliation::ByRules byRules;
        if (!entry.at(1).is_null())
            byRules = entry.at(1).get<bool>();
        reconciliation.TallyOf({entry.at(0).get<Answer>(), byRules,
                                entry.at(2).get<WasRecorded>()}) = GetTally(entry.at(3));
    }
    reconciliation.lost = GetTally(state.at(2));
    return reconciliation;
}

} // namespace

json Put(ReplayReport const& report) {
    json rules = json::array();
    for (std::size_t i = 0; i < report.byRule.size(); ++i)
        if (report.byRule[i].calls > 0)
            rules.push_back({i, Put(report.byRule[i])});
    json problems = json::array();
    for (ReplayReport::Problem const& problem : report.problems)
        problems.push_back(Put(problem));
    json differences = json::array();
    for (auto const& [pair, tally] : report.differences)
        differences.push_back({pair, Put(tally)});
    return {
        {"files", PutFiles(report.files)},
        {"all", Put(report.all)},
        {"rule_count", report.byRule.size()},
        {"rules", rules},
        {"no_rule", Put(report.noRule)},
        {"forbidden", Put(report.forbidden)},
        {"leading_digits", Put(report.noRuleByDigits)},
        {"without_rules",
         {Put(report.withoutRulesBefore), Put(report.withoutRulesOfNoTime),
          Put(report.withoutRulesNotKept)}},
        {"reconciliation", Put(report.reconciliation)},
        {"timeline", Put(report.timeline)},
        {"asked", {report.asParties, report.asTyped, report.asBoth}},
        {"cleaned", report.cleaned},
        {"unreadable", report.unreadable},
        {"problems", problems},
        {"without_time", report.withoutTime},
        {"first_without_time", report.firstWithoutTime ? Put(*report.firstWithoutTime) : json()},
        {"different", Put(report.different)},
        {"differences", differences},
        {"more_differences", Put(report.moreDifferences)},
        {"interrupted", report.isInterrupted}};
}

ReplayReport GetReport(json const& state) {
    ReplayReport report;
    report.files = GetFiles(state.at("files"));
    report.all = GetTally(state.at("all"));
    report.byRule.resize(state.at("rule_count"));
    for (json const& rule : state.at("rules"))
        report.byRule.at(rule.at(0)) = GetTally(rule.at(1));
    report.noRule = GetTally(state.at("no_rule"));
    report.forbidden = GetTally(state.at("forbidden"));
    report.noRuleByDigits = GetDigits(state.at("leading_digits"));
    json const& withoutRules = state.at("without_rules");
    report.withoutRulesBefore = GetTally(withoutRules.at(0));
    report.withoutRulesOfNoTime = GetTally(withoutRules.at(1));
    report.withoutRulesNotKept = GetTally(withoutRules.at(2));
    report.reconciliation = GetReconciliation(state.at("reconciliation"));
    report.timeline = GetTimeline(state.at("timeline"));
    json const& asked = state.at("asked");
    report.asParties = asked.at(0);
    report.asTyped = asked.at(1);
    report.asBoth = asked.at(2);
    report.cleaned = state.at("cleaned");
    report.unreadable = state.at("unreadable");
    for (json const& problem : state.at("problems"))
        report.problems.push_back(GetProblem(problem));
    report.withoutTime = state.at("without_time");
    if (json const& first = state.at("first_without_time"); !first.is_null())
        report.firstWithoutTime = GetProblem(first);
    report.different = GetTally(state.at("different"));
    for (json const& difference : state.at("differences"))
        report.differences[difference.at(0)] = GetTally(difference.at(1));
    report.moreDifferences = GetTally(state.at("more_differences"));
    report.isInterrupted = state.at("interrupted");
    return report;
}

} // namespace CallRecordingUtils
