// up, down: moves a rule by a number of places.

#include <algorithm>
#include <memory>

#include <fmt/format.h>

#include "administration/inspection/RuleNames.h"
#include "commands/RunEdit.h"
#include "output/RuleText.h"

namespace callrecordingctl {
namespace {

constexpr char kHelp[] =
    R"(Identifiers belong to places: rules that change places exchange them too, and
the output says which rule has which identifier now. When the rule is at the end
already, nothing changes, and the exit status is 1.
)";

struct Options {
    RuleName rule;
    std::size_t places = 1;
};

ExitCode Move(RuleEdit& edit, Options const& options, bool up) {
    std::size_t const index = FindRule(edit.Before(), options.rule);
    std::size_t const room = up ? index : edit.Count() - 1 - index;
    if (room == 0) {
        Say("{} is the {} already; nothing was changed", NameOf(edit.Before()[index]),
            up ? "first" : "last");
        edit.Mention(index);
        return kExitNo;
    }
    std::size_t const distance = std::min(options.places, room);
    edit.Move(index, up ? index - distance : index + distance);
    return kExitYes;
}

void AddMove(CommandLine& line, char const* name, char const* summary, bool up) {
    auto const options = std::make_shared<Options>();
    CLI::App& move = AddEdit(line, name, summary, kHelp,
                             [options, up](RuleEdit& edit) { return Move(edit, *options, up); });
    AddRuleName(move, options->rule);
    AddNumber(move, "PLACES", "", "How many places (default: 1), at most to the end\nof the list",
              1, [options](std::uint32_t places) { options->places = places; });
}

} // namespace

void AddUpAndDown(CommandLine& line) {
    AddMove(line, "up", "Move a rule toward the front", true);
    AddMove(line, "down", "Move a rule toward the end", false);
}

} // namespace callrecordingctl
