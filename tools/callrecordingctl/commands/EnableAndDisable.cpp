// enable, disable: switches rules on or off.

#include <memory>

#include "commands/RunEdit.h"

namespace callrecordingctl {
namespace {

void AddStateCommand(CommandLine& line, char const* name, char const* summary, bool enabled) {
    auto const names = std::make_shared<std::vector<RuleName>>();
    CLI::App& command = AddEdit(line, name, summary, "", [names, enabled](RuleEdit& edit) {
        for (RuleName const rule : *names)
            edit.SetState(FindRule(edit.Before(), rule), enabled);
        return kExitYes;
    });
    AddRuleNames(command, *names);
}

} // namespace

void AddEnableAndDisable(CommandLine& line) {
    AddStateCommand(line, "enable", "Switch rules on", true);
    AddStateCommand(line, "disable", "Switch rules off", false);
}

} // namespace callrecordingctl
