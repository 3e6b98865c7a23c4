// Shows how a call fares with each rule, the nearest misses first.

#include "output/Verdicts.h"

#include <algorithm>
#include <numeric>

#include <fmt/format.h>

#include "output/Screen.h"
#include "output/Table.h"

namespace callrecordingctl {
namespace {

std::vector<std::string> Row(RuleFit const& verdict, Rule const& rule, std::size_t place) {
    return {std::to_string(place + 1), std::to_string(rule.callrecordingrule_id),
            verdict.Takes() ? "both sides match: this rule decides" : verdict.Reason()};
}

} // namespace

Verdicts JudgeUpToDeciding(RuleList const& rules, PartyCall const& call) {
    Verdicts verdicts;
    for (Rule const& rule : rules) {
        verdicts.push_back(FitOf(rule, call, {"from", "to"}));
        if (verdicts.back().Takes())
            break;
    }
    return verdicts;
}

void PrintNearest(Verdicts const& verdicts, RuleList const& rules) {
    constexpr std::size_t kMost = 5;
    std::vector<std::size_t> places(verdicts.size());
    std::iota(places.begin(), places.end(), std::size_t{0});
    std::stable_sort(places.begin(), places.end(), [&verdicts](std::size_t a, std::size_t b) {
        return verdicts[a].Nearness() > verdicts[b].Nearness();
    });
    std::size_t const shown = std::min(kMost, places.size());
    Table table({"#", "ID", "NEAREST FIRST"});
    for (std::size_t i = 0; i < shown; ++i)
        table.Add(Row(verdicts[places[i]], rules[places[i]], places[i]));
    table.Print();
    if (shown < places.size())
        PrintLines("and {} more, which --all shows\n", places.size() - shown);
}

void PrintAll(Verdicts const& verdicts, RuleList const& rules) {
    Table table({"#", "ID", "OUTCOME", "DESCRIPTION"});
    for (std::size_t i = 0; i < verdicts.size(); ++i) {
        std::vector<std::string> row = Row(verdicts[i], rules[i], i);
        row.push_back(rules[i].description);
        table.Add(row);
    }
    table.Print();
}

nlohmann::ordered_json ToJson(Verdicts const& verdicts, RuleList const& rules) {
    auto document = nlohmann::ordered_json::array();
    for (std::size_t i = 0; i < verdicts.size(); ++i)
        document.push_back({{"position", i + 1},
                            {"callrecordingrule_id", rules[i].callrecordingrule_id},
                            {"decides", verdicts[i].Takes()},
                            {"passed_over_because", verdicts[i].Reason()}});
    return document;
}

} // namespace callrecordingctl
