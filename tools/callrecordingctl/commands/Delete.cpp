// delete: deletes rules, and with --twin the rules that mirror them.

#include <algorithm>
#include <memory>

#include "administration/edit/Twins.h"
#include "commands/RunEdit.h"
#include "commands/SelectionOptions.h"
#include "model/RuleSides.h"

namespace callrecordingctl {
namespace {

constexpr char kHelp[] =
    R"(With --twin, all rules before a rule that mirror it are deleted too, or if there
are none, the first one after it. If no rule mirrors it, nothing is deleted. The
output has the commands that bring the rules back; "undo" does so too.
Example: callrecordingctl delete --record-to-is archive:/old --dry-run
)";

struct Options {
    RuleSelection selection;
    bool twin = false;
};

/// The twins that are deleted with the rule at index, the same as by the library: all of them
/// before it, or if there are none, the first one after it.
std::vector<std::size_t> TwinsToDelete(RuleList const& rules, std::size_t index) {
    std::vector<std::size_t> twins;
    FindTwin(rules, index);
    for (std::size_t i = 0; i < rules.size() && (i < index || twins.empty()); ++i)
        if (i != index && AreTwins(rules[index], rules[i]))
            twins.push_back(i);
    return twins;
}

ExitCode Delete(RuleEdit& edit, Options const& options) {
    std::vector<std::size_t> const selected = Select(edit.Before(), options.selection);
    std::vector<std::size_t> places = selected;
    if (options.twin)
        for (std::size_t const index : selected)
            for (std::size_t const twin : TwinsToDelete(edit.Before(), index))
                places.push_back(twin);
    std::sort(places.rbegin(), places.rend());
    places.erase(std::unique(places.begin(), places.end()), places.end());
    for (std::size_t const place : places)
        edit.Delete(place);
    return kExitYes;
}

} // namespace

void AddDelete(CommandLine& line) {
    auto const options = std::make_shared<Options>();
    CLI::App& command = AddEdit(line, "delete", "Delete rules", kHelp, options, Delete);
    AddSelection(command, options->selection, WithoutSelection::IsRefused);
    command.add_flag("--twin", options->twin, "Delete the mirrored twin too");
}

} // namespace callrecordingctl
