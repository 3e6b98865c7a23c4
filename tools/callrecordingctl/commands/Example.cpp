// example: a call that a rule decides, or why there is none.

#include <memory>

#include <fmt/format.h>

#include "CommandLine.h"
#include "Rules.h"
#include "administration/check/Reasons.h"
#include "administration/inspection/RuleNames.h"
#include "commands/AnalysisOptions.h"
#include "output/CallText.h"
#include "output/RuleText.h"
#include "output/Screen.h"
#include "json/Names.h"

namespace callrecordingctl {
namespace {

constexpr char kHelp[] =
    R"(Looks at all calls there can be, not at a few: without a call to show, the rule
decides none. Rules before it take calls of it when they match them as well.
Exit status: 0 it decides calls, 1 it never does, 6 undecided.
Example: callrecordingctl example 7
)";

/// What the rule that is called name does.
std::string Sentence(std::string const& name, RuleReport const& report, RuleList const& rules) {
    if (report.standing == RuleReport::kDecides)
        return fmt::format("{} decides the call {}", name, CallText(*report.call));
    char const* const between = report.standing == RuleReport::kUndecided ? ": " : " ";
    return name + between + WhyItDecidesNothing(report, rules);
}

/// Which other rules take calls of it.
std::string TakersText(RuleReport const& report, RuleList const& rules) {
    if (report.takenBy.empty())
        return report.isComplete ? ""
                                 : "whether earlier rules take others of its calls is undecided";
    return "other calls that it matches are taken by " + RulesText(rules, report.takenBy) +
           (report.isComplete ? "" : ", and perhaps by more rules");
}

nlohmann::ordered_json ToJson(RuleReport const& report) {
    nlohmann::ordered_json json{{"decides", nullptr}, {"call", nullptr}};
    if (report.standing != RuleReport::kUndecided)
        json["decides"] = report.standing == RuleReport::kDecides;
    if (report.call)
        json["call"] = CallToJson(*report.call);
    return json;
}

void Print(RuleReport const& report, RuleList const& rules, std::size_t place, CallKind calls,
           Context const& context) {
    std::string const name = fmt::format("rule {}", rules[place].callrecordingrule_id);
    PrintLines("{}\n", Sentence(name, report, rules));
    if (report.standing != RuleReport::kDecides)
        return;
    PrintText(WrappedCommand("  " + DecideCommand(*report.call, calls, context), 4));
    std::string const takers = TakersText(report, rules);
    if (!takers.empty())
        PrintLines("{}\n", takers);
}

ExitCode Example(Context const& context, RuleQuestion const& question) {
    RuleList const rules = LoadRules(context.path);
    NoteMalformed(rules);
    std::size_t const place = FindRule(rules, question.rule);
    auto const& [calls, memory] = question.analysis;
    RuleReport const report = RuleAnalysis(rules, memory, calls).Report(place);
    RuleReport const other = RuleAnalysis(rules, memory, OtherThan(calls)).Report(place, 0);
    bool const isOtherwise = other.standing != report.standing;
    if (context.json) {
        nlohmann::ordered_json json{{NameOf(RuleMember::Id), rules[place].callrecordingrule_id},
                                    {NameOf(RuleMember::Position), place + 1}};
        json.update(ToJson(report));
        json["taken_by"] = IdsToJson(rules, report.takenBy);
        json["taken_by_complete"] = report.isComplete;
        json["other_calls"] = nullptr;
        if (isOtherwise) {
            json["other_calls"] = {{"calls", CallsName(OtherThan(calls))}};
            json["other_calls"].update(ToJson(other));
        }
        PrintJson(json);
    } else {
        Print(report, rules, place, calls, context);
        if (isOtherwise)
            PrintLines("with --calls {} {}\n", CallsName(OtherThan(calls)),
                       Sentence("it", other, rules));
    }
    return CodeOf(report);
}

} // namespace

void AddExample(CommandLine& line) {
    auto const question = std::make_shared<RuleQuestion>();
    AddRuleQuestion(line.AddCommand("example",
                                    "Show a call that a rule decides, or why there is none", kHelp,
                                    question, Example),
                    *question);
}

} // namespace callrecordingctl
