// modify: changes the given fields of rules, and with --twin of the rules that mirror them.

#include <memory>
#include <set>

#include "administration/edit/Twins.h"
#include "administration/inspection/RuleNames.h"
#include "commands/RuleFields.h"
#include "commands/RunEdit.h"
#include "commands/SelectionOptions.h"
#include "model/RuleSides.h"
#include "output/RuleText.h"

namespace callrecordingctl {
namespace {

constexpr char kHelp[] =
    R"(Fields that are not given keep their values, the call types too.
With --twin, the first rule that mirrors a rule gets its recording type,
destination, duration and state, and mirrors its new sides if they change; the
twin keeps its description. Without such a rule nothing is changed.
"callrecordingctl --help" explains the patterns.
Example: callrecordingctl modify --record-to-is /old --record-to /new --dry-run
)";

struct Options {
    RuleSelection selection;
    RuleFields fields;
    bool twin = false;
    bool everyone = false;
};

/// The rule with the fields set. Throws a Failure, which names the rule where there are several.
Rule Modified(Rule rule, Options const& options, bool isOneOfSeveral) {
    bool const wasForEveryone = IsForEveryone(rule);
    try {
        Apply(options.fields, rule);
        if (!wasForEveryone)
            RequireEveryone(rule, options.everyone);
    } catch (Failure const& failure) {
        throw Failure(failure.Code(), (isOneOfSeveral ? NameOf(rule) + ": " : "") + failure.what());
    }
    return rule;
}

/// The rule at place as the twin of a changed rule.
Rule MirroredAs(Rule const& twin, Rule const& changed) {
    Rule mirrored = Mirrored(changed);
    mirrored.callrecordingrule_id = twin.callrecordingrule_id;
    mirrored.description = twin.description;
    return mirrored;
}

ExitCode Modify(RuleEdit& edit, Options const& options) {
    if (!options.fields.AreGiven())
        throw Failure(kExitUsage, "modify: no field to change is given");
    RuleList const& rules = edit.Before();
    std::vector<std::size_t> const places = Select(rules, options.selection);
    std::vector<bool> isDone(rules.size(), false); // As the twin of another one.
    std::set<std::string> notes;
    for (std::size_t const place : places) {
        if (isDone[place])
            continue;
        Rule const rule = Modified(rules[place], options, places.size() > 1);
        for (std::string const& note : NotesOn(options.fields, rule))
            if (notes.insert(note).second)
                SayNote(note);
        edit.Set(place, rule);
        if (!options.twin)
            continue;
        std::size_t const twin = FindTwin(rules, place);
        edit.Set(twin, MirroredAs(rules[twin], rule));
        isDone[twin] = true;
    }
    if (edit.IsChanged())
        return kExitYes;
    Say("{} {} that already; nothing was changed", RulesText(rules, places),
        places.size() == 1 ? "says" : "say");
    return kExitNo;
}

} // namespace

void AddModify(CommandLine& line) {
    auto const options = std::make_shared<Options>();
    CLI::App& modify =
        AddEdit(line, "modify", "Change the given fields of rules", kHelp, options, Modify);
    AddSelection(modify, options->selection, WithoutSelection::IsRefused);
    AddRuleFields(modify, options->fields, false);
    modify.add_flag("--twin", options->twin, "Change the mirrored twin too");
    AddEveryone(modify, options->everyone);
}

} // namespace callrecordingctl
