// enable, disable: the state of a rule.

#include <memory>

#include "commands/Registry.h"
#include "edit/RunEdit.h"

namespace callrecordingctl {
namespace {

void AddStateCommand(CommandLine& line, char const* name, char const* summary,
                     CallRecordingUtils::RecordingRuleStates state) {
    auto const id = std::make_shared<std::int32_t>();
    CLI::App& command = AddEdit(line, name, summary, "", [id, state](RuleEdit& edit) {
        std::size_t const index = FindRule(edit.Before(), *id);
        Rule rule = edit.Before()[index];
        rule.recording_rule_state = state;
        edit.Set(index, rule);
    });
    AddId(command, *id);
}

} // namespace

void AddEnableAndDisable(CommandLine& line) {
    AddStateCommand(line, "enable", "Switch a rule on", CallRecordingUtils::RULE_ENABLED);
    AddStateCommand(line, "disable", "Switch a rule off", CallRecordingUtils::RULE_DISABLED);
}

} // namespace callrecordingctl
