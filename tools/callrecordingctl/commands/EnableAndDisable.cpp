// enable, disable: switches rules on or off.

#include <memory>

#include "administration/inspection/RuleNames.h"
#include "commands/RunEdit.h"
#include "commands/SelectionOptions.h"

namespace callrecordingctl {
namespace {

ExitCode Switch(RuleEdit& edit, RuleSelection const& selection, bool enabled) {
    RuleList const& rules = edit.Before();
    std::vector<std::size_t> const places = Select(rules, selection);
    for (std::size_t const place : places)
        edit.SetState(place, enabled);
    if (edit.IsChanged())
        return kExitYes;
    Say("{} {} {} already; nothing was changed",
        places.size() == 1 ? NameOf(rules[places[0]]) : RulesText(rules, places),
        places.size() == 1 ? "is" : "are", enabled ? "on" : "off");
    return kExitNo;
}

void AddStateCommand(CommandLine& line, char const* name, char const* summary, bool enabled) {
    auto const selection = std::make_shared<RuleSelection>();
    CLI::App& command = AddEdit(line, name, summary, "", [selection, enabled](RuleEdit& edit) {
        return Switch(edit, *selection, enabled);
    });
    AddSelection(command, *selection, WithoutSelection::IsRefused);
}

} // namespace

void AddEnableAndDisable(CommandLine& line) {
    AddStateCommand(line, "enable", "Switch rules on", true);
    AddStateCommand(line, "disable", "Switch rules off", false);
}

} // namespace callrecordingctl
