// delete: a rule, and with --twin what mirrors it.

#include <algorithm>
#include <memory>

#include "administration/edit/Twins.h"
#include "commands/Registry.h"
#include "commands/RunEdit.h"
#include "model/RuleSides.h"

namespace callrecordingctl {
namespace {

constexpr char kHelp[] =
    R"(With --twin, all rules before this one that mirror it go too, or if there is
none the first behind it. Without such a rule nothing is deleted. The output has
the commands that bring the rules back; "undo" does so, too.
)";

struct Options {
    std::vector<RuleName> rules;
    bool twin = false;
};

/// The twins that go with the rule at index, as when the library deletes a rule with its twins:
/// every one before it, and if there is none the first behind it.
std::vector<std::size_t> TwinsToDelete(RuleList const& rules, std::size_t index) {
    std::vector<std::size_t> twins;
    FindTwin(rules, index);
    for (std::size_t i = 0; i < rules.size() && (i < index || twins.empty()); ++i)
        if (i != index && AreTwins(rules[index], rules[i]))
            twins.push_back(i);
    return twins;
}

ExitCode Delete(RuleEdit& edit, Options const& options) {
    std::vector<std::size_t> places;
    for (RuleName const rule : options.rules) {
        std::size_t const index = FindRule(edit.Before(), rule);
        places.push_back(index);
        if (options.twin)
            for (std::size_t const twin : TwinsToDelete(edit.Before(), index))
                places.push_back(twin);
    }
    std::sort(places.rbegin(), places.rend());
    places.erase(std::unique(places.begin(), places.end()), places.end());
    for (std::size_t const place : places)
        edit.Delete(place);
    return kExitYes;
}

} // namespace

void AddDelete(CommandLine& line) {
    auto const options = std::make_shared<Options>();
    CLI::App& command = AddEdit(line, "delete", "Delete rules", kHelp,
                                [options](RuleEdit& edit) { return Delete(edit, *options); });
    AddRuleNames(command, options->rules);
    command.add_flag("--twin", options->twin, "Delete the mirrored twin too");
}

} // namespace callrecordingctl
