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

void PrintCallChanges(Comparison const& comparison, RuleList const& before, RuleList const& after) {
    constexpr std::size_t kMost = 20;
    std::size_t shown = 0;
    for (auto const& [call, here, there] : comparison.differences)
        if (++shown <= kMost)
            PrintLines("dry run: the call {}\n  now: {}\n  then: {}\n", CallText(call),
                       DecisionText(before, here), DecisionText(after, there));
    if (shown > kMost)
        PrintLines("dry run: and a call for each of {} more pairs of rules\n", shown - kMost);
    if (comparison.same == true)
        PrintLines("dry run: no call is decided differently\n");
    if (IsIncomplete(comparison))
        PrintLines("dry run: whether {}calls are decided differently is undecided: {}\n",
                   comparison.differences.empty() ? "" : "further ",
                   WhyIncomplete(comparison, before, after));
}

} // namespace callrecordingctl
