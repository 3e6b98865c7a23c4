// explain: says which calls a rule decides, which rules take others from it, and what would change
// without it.

#include <memory>

#include <fmt/format.h>

#include "CommandLine.h"
#include "Rules.h"
#include "administration/check/Reasons.h"
#include "commands/AnalysisOptions.h"
#include "output/CallText.h"
#include "output/ComparisonText.h"
#include "output/LossText.h"
#include "output/RuleText.h"
#include "output/Screen.h"
#include "json/Names.h"

namespace callrecordingctl {
namespace {

constexpr char kHelp[] =
    R"(Lists the calls that the rule decides, as patterns where up to 200 patterns cover
exactly these calls, else an example. Then the earlier rules that take calls
from it, with a call for each and what becomes of it. Then which calls would be
decided differently if the rule were switched off, or stood first.
Exit status: 0 it decides calls, 1 it never does, 6 undecided.
"example" is the short form.
Example: callrecordingctl explain 7
)";

class Explainer {
  public:
    Explainer(RuleList const& rules, std::size_t place, CallKind calls,
              Explanation const& explanation)
        : rules_(rules), place_(place), calls_(calls), explanation_(explanation) {}

    void Print() const {
        PrintLines("rule {}: {}\n", rules_[place_].callrecordingrule_id, SidesText(rules_[place_]));
        PrintDecided();
        PrintLosses();
        PrintChanges(explanation_.ifGone, "without it,");
        PrintChanges(explanation_.ifFirst, "if it stood first,");
    }

    nlohmann::ordered_json ToJson() const {
        RuleReport const& report = explanation_.report;
        nlohmann::ordered_json decides;
        if (explanation_.decides.areExact || DecidesNothing())
            decides = {{"patterns", PatternsToJson(explanation_.decides)}};
        else
            decides = {{"examples", report.call ? CallsToJson({*report.call})
                                                : nlohmann::ordered_json::array()}};
        auto loses = nlohmann::ordered_json::array();
        for (Explanation::Loss const& loss : explanation_.losses)
            loses.push_back(LossToJson(rules_, place_, loss.taker, loss.call));
        return {{NameOf(RuleMember::Id), rules_[place_].callrecordingrule_id},
                {NameOf(RuleMember::Position), place_ + 1},
                {"calls", CallsName(calls_)},
                {"decides", decides},
                {"loses", loses},
                {"loses_complete", explanation_.areLossesComplete},
                {"without", ComparisonToJson(explanation_.ifGone, rules_, rules_)},
                {"as_first", ComparisonToJson(explanation_.ifFirst, rules_, rules_)}};
    }

  private:
    bool DecidesNothing() const {
        RuleReport::Standing const standing = explanation_.report.standing;
        return standing != RuleReport::kDecides && standing != RuleReport::kUndecided;
    }

    void PrintDecided() const {
        RuleReport const& report = explanation_.report;
        if (report.standing == RuleReport::kUndecided) {
            PrintLines("{}\n", WhyItDecidesNothing(report, rules_));
        } else if (report.standing != RuleReport::kDecides) {
            PrintLines("it {}\n", WhyItDecidesNothing(report, rules_));
        } else if (explanation_.decides.areExact) {
            PrintLines("it decides exactly these calls:\n");
            PrintPatterns(explanation_.decides);
        } else {
            PrintLines("no patterns were found that cover exactly the calls that it decides; an "
                       "example:\n  {}\n",
                       CallText(*report.call));
        }
    }

    void PrintLosses() const {
        if (!explanation_.losses.empty())
            PrintLines("earlier rules take calls from it, of which these are examples:\n");
        for (Explanation::Loss const& loss : explanation_.losses)
            PrintLines("  {}\n", LossText(rules_, place_, loss.taker, loss.call));
        if (!explanation_.areLossesComplete)
            PrintLines("{} earlier rules may take calls from it\n",
                       explanation_.losses.empty() ? "some" : "more");
    }

    void PrintChanges(Comparison const& comparison, char const* when) const {
        if (comparison.same == true)
            PrintLines("{} no call would be decided differently\n", when);
        if (!comparison.differences.empty())
            PrintLines("{} calls would be decided differently; one for {}:\n", when,
                       comparison.areAllLookedFor
                           ? "each pair of rules"
                           : fmt::format("each of {} pairs of rules; --json has all",
                                         comparison.differences.size()));
        for (Difference const& difference : comparison.differences)
            PrintLines("  {}\n    now {}\n    then {}\n", CallText(difference.call),
                       DecisionText(rules_, difference.here),
                       DecisionText(rules_, difference.there));
        if (IsIncomplete(comparison))
            PrintLines("{} whether {}calls would be decided differently is undecided: {}\n", when,
                       comparison.differences.empty() ? "" : "further ",
                       WhyIncomplete(comparison, rules_, rules_));
    }

    RuleList const& rules_;
    std::size_t const place_;
    CallKind const calls_;
    Explanation const& explanation_;
};

ExitCode Explain(Context const& context, RuleQuestion const& question) {
    RuleList const rules = LoadRules(context.path);
    NoteMalformed(rules);
    std::size_t const place = FindRule(rules, question.rule);
    auto const& [calls, memory] = question.analysis;
    Explanation const explanation =
        RuleAnalysis(rules, memory, calls)
            .Explain(place, context.json ? kAllPairs : kPairsOfRuleShown);
    Explainer const explainer(rules, place, calls, explanation);
    if (context.json)
        PrintJson(explainer.ToJson());
    else
        explainer.Print();
    return CodeOf(explanation.report);
}

} // namespace

void AddExplain(CommandLine& line) {
    auto const question = std::make_shared<RuleQuestion>();
    AddRuleQuestion(line.AddCommand("explain",
                                    "Say which calls a rule decides, loses and is needed for",
                                    kHelp, question, Explain),
                    *question);
}

} // namespace callrecordingctl
