// Prints comparisons.

#include "output/ComparisonText.h"

#include <fmt/format.h>

#include "administration/check/Reasons.h"
#include "output/CallText.h"
#include "output/Screen.h"

namespace callrecordingctl {

namespace {

std::string Why(UndecidedPair const& pair, RuleList const& here, RuleList const& there) {
    return WhyUndecided(pair.isWhyThere ? there : here, pair.why);
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

void PrintCallChanges(Comparison const& comparison, RuleList const& before, RuleList const& after,
                      bool isDryRun) {
    char const* const prefix = isDryRun ? "dry run: " : "";
    constexpr std::size_t kMost = 20;
    std::size_t shown = 0;
    for (auto const& [call, here, there] : comparison.differences)
        if (++shown <= kMost)
            PrintLines("{}the call {}\n  {}: {}\n  {}: {}\n", prefix, CallText(call),
                       isDryRun ? "now" : "before", DecisionText(before, here),
                       isDryRun ? "then" : "now", DecisionText(after, there));
    if (shown > kMost)
        PrintLines("{}and a call for each of {} more pairs of rules\n", prefix, shown - kMost);
    if (comparison.same == true)
        PrintLines("{}no call is decided differently\n", prefix);
    if (IsIncomplete(comparison))
        PrintLines("{}whether {}calls are decided differently is undecided: {}\n", prefix,
                   comparison.differences.empty() ? "" : "further ",
                   WhyIncomplete(comparison, before, after));
}

} // namespace callrecordingctl
