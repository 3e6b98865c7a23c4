// show: one rule in full.

#include <memory>

#include <fmt/format.h>

#include "CommandLine.h"
#include "Digest.h"
#include "Rules.h"
#include "commands/Registry.h"
#include "output/RuleText.h"
#include "output/Table.h"
#include "validation/SidePattern.h"

namespace callrecordingctl {
namespace {

void ExplainPattern(char const* side, std::string const& stored, CallType type) {
    if (auto const problem = CallRecordingUtils::ExplainStored(stored, type))
        Say("{}: malformed: {}", side, problem->message);
    else if (stored.empty())
        Say("{}: an empty pattern never matches", side);
}

ExitCode Show(Context const& context, RuleName name) {
    std::string digest;
    RuleList const rules = LoadRules(context.path, digest);
    std::string const state = StateToken(digest);
    std::size_t const index = FindRule(rules, name);
    Rule const& rule = rules[index];
    if (context.json) {
        PrintJson(ToJson(rule, index + 1, state));
        return kExitYes;
    }
    std::vector<std::string> names = ListHeaders();
    std::vector<std::string> values = ListRow(rule, index + 1);
    names.insert(names.end(), {"FROM, STORED", "TO, STORED", "FILE STATE"});
    values.insert(values.end(), {rule.caller_pattern, rule.called_pattern, state});
    for (std::size_t i = 0; i < names.size(); ++i)
        fmt::print("{:<12}{}{}\n", names[i], values[i].empty() ? "" : "  ", Printable(values[i]));
    ExplainPattern("from", rule.caller_pattern, rule.caller_call_type);
    ExplainPattern("to", rule.called_pattern, rule.called_call_type);
    return kExitYes;
}

} // namespace

void AddShow(CommandLine& line) {
    auto const rule = std::make_shared<RuleName>();
    CLI::App& show =
        line.AddCommand("show", "Show one rule in full", "",
                        [rule](Context const& context) { return Show(context, *rule); });
    AddRuleName(show, *rule);
}

} // namespace callrecordingctl
