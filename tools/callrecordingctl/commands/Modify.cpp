// modify: changes the given fields of a rule, and with --twin of the rule that mirrors it.

#include <memory>

#include "administration/edit/Twins.h"
#include "commands/RuleFields.h"
#include "commands/RunEdit.h"
#include "model/RuleSides.h"
#include "output/RuleText.h"

namespace callrecordingctl {
namespace {

constexpr char kHelp[] =
    R"(Fields that are not given keep their values, the call types too.
With --twin, the first rule that mirrors this one gets its recording type,
destination, duration and state, and mirrors its new sides if they change; the
twin keeps its description. Without such a rule nothing is changed.
"callrecordingctl --help" explains the patterns.
)";

struct Options {
    RuleName rule;
    RuleFields fields;
    bool twin = false;
    bool everyone = false;
};

ExitCode Modify(RuleEdit& edit, Options const& options) {
    if (!options.fields.AreGiven())
        throw Failure(kExitUsage, "modify: no field to change is given");
    RuleList const& rules = edit.Before();
    std::size_t const index = FindRule(rules, options.rule);
    Rule rule = rules[index];
    Apply(options.fields, rule);
    if (!IsForEveryone(rules[index]))
        RequireEveryone(rule, options.everyone);
    edit.Set(index, rule);
    if (!options.twin)
        return kExitYes;
    std::size_t const twin = FindTwin(rules, index);
    Rule mirrored = Mirrored(rule);
    mirrored.callrecordingrule_id = rules[twin].callrecordingrule_id;
    mirrored.description = rules[twin].description;
    edit.Set(twin, mirrored);
    return kExitYes;
}

} // namespace

void AddModify(CommandLine& line) {
    auto const options = std::make_shared<Options>();
    CLI::App& modify =
        AddEdit(line, "modify", "Change the given fields of a rule", kHelp, options, Modify);
    AddRuleName(modify, options->rule);
    AddRuleFields(modify, options->fields, false);
    modify.add_flag("--twin", options->twin, "Change the mirrored twin too");
    AddEveryone(modify, options->everyone);
}

} // namespace callrecordingctl
