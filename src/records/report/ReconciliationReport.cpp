// Describes a reconciliation.

#include "records/report/ReconciliationReport.h"

#include <fmt/format.h>

#include "records/report/ReportJson.h"

namespace CallRecordingUtils {
namespace {

using nlohmann::ordered_json;

ordered_json AnswersToJson(Reconciliation const& reconciliation) {
    auto list = ordered_json::array();
    for (auto const& [which, tally] : reconciliation.Cases()) {
        auto const& [answer, byRules, was] = which;
        ordered_json entry{{"answered", AnswerWord(answer)},
                           {"by_rules", nullptr},
                           {"recorded", nullptr},
                           {"calls", tally.calls},
                           {"example", ExampleToJson(tally.example)}};
        if (byRules)
            entry["by_rules"] = *byRules;
        if (was != WasRecorded::Unknown)
            entry["recorded"] = was == WasRecorded::Yes;
        list.push_back(entry);
    }
    return list;
}

ordered_json ExamplesToJson(Reconciliation::ByRule const& tallies, RuleList const& rules) {
    auto list = ordered_json::array();
    for (auto const& [decision, tally] : tallies)
        list.push_back({{"calls", tally.calls},
                        {"decided", decision != kNotDecided},
                        {"rule", DecisionToJson(rules, decision)},
                        {"example", ExampleToJson(tally.example)}});
    return list;
}

/// Calls of files that do not tell what was recorded.
std::uint64_t NotTold(ReplayReport const& report) {
    std::uint64_t told = 0;
    for (std::size_t i = 0; i < Reconciliation::kOutcomeCount; ++i)
        told += report.reconciliation.Total(Reconciliation::Outcome(i)).calls;
    return report.all.calls - told;
}

} // namespace

std::vector<std::string> ReconciliationSentences(ReplayReport const& report) {
    Reconciliation const& reconciliation = report.reconciliation;
    if (!reconciliation.IsKnown())
        return {};
    auto const count = [&](Reconciliation::Outcome outcome) {
        return reconciliation.Total(outcome).calls;
    };
    std::vector<std::string> sentences{
        fmt::format("{} of {} calls compared: recorded as it should: {}, not recorded as it "
                    "should: {}, missing: {}, "
                    "unexpected: {}",
                    reconciliation.Compared(), report.all.calls, count(Reconciliation::kRecorded),
                    count(Reconciliation::kNotRecorded), count(Reconciliation::kMissing),
                    count(Reconciliation::kUnexpected))};
    if (std::uint64_t const calls = count(Reconciliation::kUnknown) + NotTold(report); calls > 0)
        sentences.push_back(fmt::format("not compared: {}, not known whether recorded", calls));
    if (std::uint64_t const calls = count(Reconciliation::kUndecided); calls > 0)
        sentences.push_back(fmt::format("not compared: {}, neither the rules nor an answer say "
                                        "whether to record",
                                        calls));
    if (reconciliation.lost.calls > 0)
        sentences.push_back(fmt::format("not recorded, though metadata of rtpengine names a "
                                        "recording: {}; it is not there, or empty",
                                        reconciliation.lost.calls));
    return sentences;
}

char const* AnswerWord(Answer answer) {
    switch (answer) {
    case Answer::Yes: return "yes";
    case Answer::No: return "no";
    case Answer::Undecided: return "undecided";
    default: return "none";
    }
}

char const* ByRulesWord(Reconciliation::ByRules byRules) {
    return !byRules ? "not known" : *byRules ? "yes" : "no";
}

char const* WasRecordedWord(WasRecorded was) {
    return was == WasRecorded::Unknown ? "not known" : was == WasRecorded::Yes ? "yes" : "no";
}

ordered_json ReconciliationToJson(ReplayReport const& report, RuleList const& rules) {
    Reconciliation const& reconciliation = report.reconciliation;
    if (!reconciliation.IsKnown())
        return nullptr;
    ordered_json json;
    auto examples = ordered_json::object();
    for (std::size_t i = 0; i < Reconciliation::kOutcomeCount; ++i) {
        auto const outcome = static_cast<Reconciliation::Outcome>(i);
        json[kOutcomeNames[i]] = reconciliation.Total(outcome).calls;
        examples[kOutcomeNames[i]] = ExamplesToJson(reconciliation.Of(outcome), rules);
    }
    json["not_told"] = NotTold(report);
    json["lost"] = {{"calls", reconciliation.lost.calls},
                    {"example", ExampleToJson(reconciliation.lost.example)}};
    json["examples"] = examples;
    json["answers"] = AnswersToJson(reconciliation);
    return json;
}

} // namespace CallRecordingUtils
