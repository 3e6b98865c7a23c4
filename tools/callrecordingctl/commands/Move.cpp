// move: moves rules to a position; they keep their order.

#include <algorithm>
#include <memory>

#include <fmt/format.h>

#include "commands/RunEdit.h"
#include "commands/SelectionOptions.h"

namespace callrecordingctl {
namespace {

constexpr char kHelp[] =
    R"(Several rules keep their order and follow one another, the first at PLACE.
Identifiers belong to places: rules that change places exchange them too, and
the output says which rule has which identifier now. The comments directly above
a rule move with it.
Example: callrecordingctl move 17-20 --before 3
)";

struct Options {
    RuleSelection selection;
    std::optional<std::size_t> to;
    std::optional<RuleName> before;
    std::optional<RuleName> after;
};

/// How many of the rules that do not move come before those that do.
std::size_t Ahead(RuleList const& rules, Options const& options,
                  std::vector<std::size_t> const& moved) {
    if (options.to) {
        if (*options.to > rules.size())
            throw Failure(kExitUsage, fmt::format("--to {}: there are only {} rules", *options.to,
                                                  rules.size()));
        std::size_t const last = rules.size() - moved.size() + 1;
        if (*options.to > last)
            throw Failure(kExitUsage,
                          fmt::format("--to {}: the first of {} rules can be at most at {}",
                                      *options.to, moved.size(), last));
        return *options.to - 1;
    }
    std::size_t const anchor = FindRule(rules, options.before ? *options.before : *options.after);
    if (std::find(moved.begin(), moved.end(), anchor) != moved.end())
        throw Failure(kExitUsage, fmt::format("{}: rule {} is one of those that move",
                                              options.before ? "--before" : "--after",
                                              rules[anchor].callrecordingrule_id));
    auto const passed = static_cast<std::size_t>(
        std::lower_bound(moved.begin(), moved.end(), anchor) - moved.begin());
    return anchor - passed + (options.before ? 0 : 1);
}

ExitCode Move(RuleEdit& edit, Options const& options) {
    RuleList const& rules = edit.Before();
    std::vector<std::size_t> moved = Select(rules, options.selection);
    std::sort(moved.begin(), moved.end());
    std::size_t const place = Ahead(rules, options, moved);
    // Rules that move toward the end go first, beginning with the last: so none passes another.
    auto const fromFront = [&](std::size_t i) { return moved[i] - i < place; };
    std::size_t down = 0;
    while (down < moved.size() && fromFront(down))
        ++down;
    bool isMoved = false;
    auto const moveOne = [&](std::size_t i) {
        std::size_t const from = edit.PlaceOf(moved[i]);
        isMoved = isMoved || from != place + i;
        edit.Move(from, place + i);
    };
    for (std::size_t i = down; i-- > 0;)
        moveOne(i);
    for (std::size_t i = down; i < moved.size(); ++i)
        moveOne(i);
    if (!isMoved)
        Say("{} there already; nothing was changed",
            moved.size() == 1 ? "the rule is" : "the rules are");
    return isMoved ? kExitYes : kExitNo;
}

} // namespace

void AddMove(CommandLine& line) {
    auto const options = std::make_shared<Options>();
    CLI::App& move = AddEdit(line, "move", "Move rules to another position", kHelp, options, Move);
    AddSelection(move, options->selection, WithoutSelection::IsRefused);
    CLI::Option_group* const target = move.add_option_group("Place", "One of these is required");
    AddNumber(
        *target, "--to", "PLACE", "Position of the first one; 1 is evaluated first", 1,
        [options](std::uint32_t place) { options->to = place; });
    auto const addAnchor = [target](char const* name, char const* help,
                                    std::optional<RuleName>& rule) {
        AddText(*target, name, "ID", help,
                [&rule](std::string const& text) { rule = ParseRuleName(text); });
    };
    addAnchor("--before", "The rule before which they go", options->before);
    addAnchor("--after", "The rule after which they go", options->after);
    target->require_option(1);
}

} // namespace callrecordingctl
