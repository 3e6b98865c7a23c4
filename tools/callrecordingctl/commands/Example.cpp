// example: a call that a rule decides, or why there is none.

#include <memory>

#include <fmt/format.h>

#include "CommandLine.h"
#include "Rules.h"
#include "administration/check/Reasons.h"
#include "administration/inspection/RuleNames.h"
#include "commands/AnalysisOptions.h"
#include "commands/Registry.h"
#include "output/CallText.h"
#include "output/RuleText.h"

namespace callrecordingctl {
namespace {

constexpr char kHelp[] =
    R"(Looks at all calls there can be, not at a few: without a call to show, the rule
decides none. Rules before it take calls of it when they match them as well.
Exit status: 0 it decides calls, 1 it never does, 6 undecided.
Example: callrecordingctl example 7
)";

struct Options {
    RuleName rule;
    std::size_t memory = kAnalysisMemory;
};

std::string SideName(WhichSide side) {
    return side == WhichSide::Caller ? "from" : "to";
}

std::string Sentence(RuleReport const& report, RuleList const& rules) {
    std::string const takers = RulesText(rules, report.takenBy);
    switch (report.standing) {
    case RuleReport::kDecides:
        return "decides the call " + CallText(*report.call) +
               (report.takenBy.empty() ? ""
                                       : "\nother calls that it matches are taken by " + takers);
    case RuleReport::kHidden:
        return report.takenBy.empty()
                   ? "never decides: rules before it take all its calls"
                   : fmt::format("never decides: {} before it {} all its calls", takers,
                                 report.takenBy.size() == 1 ? "takes" : "take");
    case RuleReport::kMatchesNothing:
        return fmt::format("never decides: nothing satisfies its {} side", SideName(report.side));
    case RuleReport::kOff: return "never decides: it is off";
    case RuleReport::kUndecided: break;
    }
    return "undecided: " + WhyUndecided(rules, report.why);
}

ExitCode Example(Context const& context, Options const& options) {
    RuleList const rules = LoadRules(context.path);
    std::size_t const place = FindRule(rules, options.rule);
    RuleReport const report = RuleAnalysis(rules, options.memory).Report(place);
    bool const isUndecided = report.standing == RuleReport::kUndecided;
    bool const decides = report.standing == RuleReport::kDecides;
    if (context.json)
        PrintJson(
            {{"callrecordingrule_id", rules[place].callrecordingrule_id},
             {"position", place + 1},
             {"decides", isUndecided ? nlohmann::ordered_json() : nlohmann::ordered_json(decides)},
             {"call", report.call ? CallToJson(*report.call) : nlohmann::ordered_json()},
             {"taken_by", IdsToJson(rules, report.takenBy)}});
    else
        fmt::print("rule {} {}\n", rules[place].callrecordingrule_id, Sentence(report, rules));
    return isUndecided ? kExitUndecided : decides ? kExitYes : kExitNo;
}

} // namespace

void AddExample(CommandLine& line) {
    auto const options = std::make_shared<Options>();
    CLI::App& example =
        line.AddCommand("example", "Show a call that a rule decides, or why there is none", kHelp,
                        [options](Context const& context) { return Example(context, *options); });
    AddRuleName(example, options->rule);
    AddMemory(example, options->memory);
}

} // namespace callrecordingctl
