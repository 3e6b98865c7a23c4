// add: adds a rule, as the last one or at a position.

#include <memory>

#include <fmt/format.h>

#include "commands/HelpText.h"
#include "commands/RuleFields.h"
#include "commands/RunEdit.h"
#include "model/RuleSides.h"

namespace callrecordingctl {
namespace {

constexpr char kHelp[] =
    R"(Example: callrecordingctl add --from '{200-299}' --record-to archive:/sales
"callrecordingctl --help" explains the patterns.
)";

struct Options {
    RuleFields fields;
    std::optional<std::size_t> position;
    bool twin = false;
    bool everyone = false;
};

ExitCode Add(RuleEdit& edit, Options const& options) {
    RuleFields fields = options.fields;
    Complete(fields.from);
    Complete(fields.to);
    Rule rule;
    Apply(fields, rule);
    for (std::string const& note : NotesOn(fields, rule))
        SayNote(note);
    RequireEveryone(rule, options.everyone);
    if (options.twin && MirrorsItself(rule))
        throw Failure(kExitUsage, "--twin: both sides are the same, so the rule mirrors itself");
    std::size_t const place = options.position.value_or(edit.Count() + 1) - 1;
    if (place > edit.Count())
        throw Failure(kExitUsage,
                      fmt::format("--at {}: there are only {} rules", place + 1, edit.Count()));
    edit.Insert(rule, place);
    if (options.twin)
        edit.Insert(Mirrored(rule), place + 1);
    return kExitYes;
}

} // namespace

void AddAdd(CommandLine& line) {
    auto const options = std::make_shared<Options>();
    CLI::App& add =
        AddEdit(line, "add", "Add a rule, as the last or at a position", kHelp, options, Add);
    AddRuleFields(add, options->fields, true);
    AddNumber(add, "--at", "POSITION", "Position to put the rule at; 1 is evaluated first", 1,
              [options](std::uint32_t position) { options->position = position; });
    add.add_flag("--twin", options->twin, "Add the mirrored rule too, directly after it");
    AddEveryone(add, options->everyone);
}

} // namespace callrecordingctl
