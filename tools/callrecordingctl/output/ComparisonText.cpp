// Prints comparisons.

#include "output/ComparisonText.h"

#include <algorithm>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "administration/check/Reasons.h"
#include "output/CallText.h"
#include "output/Screen.h"

namespace callrecordingctl {

namespace {

std::string Why(UndecidedPair const& pair, RuleList const& here, RuleList const& there) {
    return WhyUndecided(pair.isWhyThere ? there : here, pair.why);
}

bool AreOfTheSameRules(Difference const& a, Difference const& b) {
    return a.here == b.here && a.there == b.there;
}

/// The differences of both kinds, one for each pair of rules.
std::vector<Difference> DifferencesOf(ComparedCalls const& calls) {
    std::vector<Difference> all = calls.asked.differences;
    std::set<std::pair<std::optional<std::size_t>, std::optional<std::size_t>>> pairs;
    for (Difference const& difference : all)
        pairs.emplace(difference.here, difference.there);
    for (Difference const& difference : calls.other.differences)
        if (pairs.emplace(difference.here, difference.there).second)
            all.push_back(difference);
    return all;
}

/// Prints what there is to say of the calls of a kind beside those that are decided differently.
void PrintOthers(Comparison const& comparison, char const* call, char const* prefix,
                 RuleList const& before, RuleList const& after) {
    if (comparison.same == true)
        PrintLines("{}no {} is decided differently\n", prefix, call);
    if (IsIncomplete(comparison))
        PrintLines("{}whether {} {} is decided differently is undecided: {}\n", prefix,
                   comparison.differences.empty() ? "a" : "a further", call,
                   WhyIncomplete(comparison, before, after));
}

} // namespace

bool IsIncomplete(Comparison const& comparison) {
    return !comparison.undecided.empty();
}

std::string WhyIncomplete(Comparison const& comparison, RuleList const& here,
                          RuleList const& there) {
    return Why(comparison.undecided.front(), here, there);
}

nlohmann::ordered_json ComparisonToJson(Comparison const& comparison, RuleList const& here,
                                        RuleList const& there) {
    nlohmann::ordered_json json{
        {"same", nullptr},
        {"differences", DifferencesToJson(comparison.differences, here, there)},
        {"undecided", nlohmann::ordered_json::array()}};
    if (comparison.same)
        json["same"] = *comparison.same;
    for (UndecidedPair const& pair : comparison.undecided)
        json["undecided"].push_back({{"here", IdToJson(here, pair.here)},
                                     {"there", IdToJson(there, pair.there)},
                                     {"reason", Why(pair, here, there)}});
    return json;
}

ComparedCalls CompareCalls(RuleList const& here, RuleList const& there, std::size_t mostPairsOfRule,
                           std::size_t memory, CallKind kind) {
    return {kind, Compare(here, there, memory, kind, mostPairsOfRule),
            Compare(here, there, memory, OtherThan(kind), mostPairsOfRule)};
}

std::string PairsText(std::size_t count, bool areAll) {
    return fmt::format("{}{} {}", areAll ? "" : "at least ", count, count == 1 ? "pair" : "pairs");
}

bool ComparedCalls::AreOtherwise() const {
    return asked.same != other.same ||
           !std::equal(asked.differences.begin(), asked.differences.end(),
                       other.differences.begin(), other.differences.end(), AreOfTheSameRules);
}

char const* CallOf(CallKind kind) {
    return kind == CallKind::Typed ? "typed call" : "call of parties";
}

nlohmann::ordered_json ToJson(ComparedCalls const& calls, RuleList const& here,
                              RuleList const& there) {
    nlohmann::ordered_json json = ComparisonToJson(calls.asked, here, there);
    json["other_calls"] = nullptr;
    if (calls.AreOtherwise()) {
        json["other_calls"] = {{"calls", CallsName(OtherThan(calls.kind))}};
        json["other_calls"].update(ComparisonToJson(calls.other, here, there));
    }
    return json;
}

void PrintCallChanges(ComparedCalls const& calls, RuleList const& before, RuleList const& after,
                      bool isDryRun) {
    char const* const prefix = isDryRun ? "dry run: " : "";
    std::vector<Difference> const differences = DifferencesOf(calls);
    constexpr std::size_t kMost = 20;
    bool const areAll = calls.asked.areAllLookedFor && calls.other.areAllLookedFor;
    for (std::size_t i = 0; i < std::min(differences.size(), kMost); ++i) {
        auto const& [call, here, there] = differences[i];
        bool const isAsked = i < calls.asked.differences.size();
        PrintLines("{}the {} {}\n  {}: {}\n  {}: {}\n", prefix,
                   isAsked ? "call" : CallOf(OtherThan(calls.kind)), CallText(call),
                   isDryRun ? "now" : "before", DecisionText(before, here),
                   isDryRun ? "then" : "now", DecisionText(after, there));
    }
    if (differences.size() > kMost)
        PrintLines("{}and a call for each of {} of rules more\n", prefix,
                   PairsText(differences.size() - kMost, areAll));
    else if (!areAll)
        PrintLines("{}and perhaps calls for more pairs of rules\n", prefix);
    bool const isOfAll = !calls.AreOtherwise();
    PrintOthers(calls.asked, isOfAll ? "call" : CallOf(calls.kind), prefix, before, after);
    if (!isOfAll)
        PrintOthers(calls.other, CallOf(OtherThan(calls.kind)), prefix, before, after);
}

} // namespace callrecordingctl
