// show: one rule in full.

#include <memory>

#include <fmt/format.h>

#include "CommandLine.h"
#include "Rules.h"
#include "administration/inspection/Digest.h"
#include "commands/TextAt.h"
#include "output/RuleText.h"
#include "output/Screen.h"
#include "output/Table.h"
#include "text/Printable.h"
#include "validation/SidePattern.h"

namespace callrecordingctl {
namespace {

constexpr char kHelp[] =
    R"(With --at the file is shown as it was at that time; without ID, all its rules.
)";

void ExplainPattern(char const* side, std::string const& stored, CallType type) {
    if (auto const problem = ExplainStored(stored, type))
        Say("{}: malformed: {}", side, problem->message);
    else if (stored.empty())
        Say("{}: an empty pattern never matches", side);
}

void PrintRule(Rule const& rule, std::size_t position, std::string const& state, bool isNow) {
    std::vector<std::string> names = ListHeaders();
    std::vector<std::string> values = ListRow(rule, position);
    names.insert(names.end(), {"FROM, STORED", "TO, STORED", isNow ? "FILE STATE" : "STATE THEN"});
    values.insert(values.end(), {rule.caller_pattern, rule.called_pattern, state});
    for (std::size_t i = 0; i < names.size(); ++i)
        PrintText(Wrapped(fmt::format("{:<12}{}{}", names[i], values[i].empty() ? "" : "  ",
                                      Printable(values[i])),
                          14));
    ExplainPattern("from", rule.caller_pattern, rule.caller_call_type);
    ExplainPattern("to", rule.called_pattern, rule.called_call_type);
}

struct Options {
    std::optional<RuleName> rule;
    std::optional<std::int64_t> at;
};

ExitCode Show(Context const& context, Options const& options) {
    std::string digest;
    RuleList const rules = RulesAt(context.path, options.at, digest);
    if (!options.rule) {
        PrintRules(rules, digest, context.json, !options.at);
        return kExitYes;
    }
    std::size_t const index = FindRule(rules, *options.rule);
    if (context.json)
        PrintJson(ToJson(rules[index], index + 1, digest));
    else
        PrintRule(rules[index], index + 1, StateToken(digest), !options.at);
    return kExitYes;
}

} // namespace

void AddShow(CommandLine& line) {
    auto const options = std::make_shared<Options>();
    CLI::App& show = line.AddCommand(
        "show", "Show one rule in full, or the rules of another time", kHelp,
        [options](Context const& context) {
            if (!options->rule && !options->at)
                throw Failure(kExitUsage, "ID is required (see \"callrecordingctl help show\")");
            return Show(context, *options);
        });
    AddText(show, "ID", "", "Identifier of the rule, or its position: '#5'",
            [options](std::string const& text) { options->rule = ParseRuleName(text); });
    AddAt(show, "The rules as they were then", options->at);
}

} // namespace callrecordingctl
