// list: the rules in their order.

#include <algorithm>
#include <memory>

#include "CommandLine.h"
#include "Rules.h"
#include "administration/inspection/RuleNames.h"
#include "commands/SelectionOptions.h"
#include "model/BasicView.h"
#include "output/RuleText.h"
#include "output/Table.h"

namespace callrecordingctl {
namespace {

constexpr char kHelp[] =
    R"(FROM and TO are call type and pattern, REC the recording type, FOR the duration.
--grep finds the rules about a number, and names apart those that only
take it. When nothing is found, the exit status is 5.
On a terminal the table fits the width; elsewhere a rule is one line, unless the
environment variable COLUMNS says how wide. For scripts there is --json.
)";

struct Options {
    bool basic = false;
    RuleSelection selection;
};

/// The rules as the basic view shows them; says what it does not show.
RuleList InBasicView(RuleList const& rules) {
    BasicView view;
    for (Rule const& rule : rules)
        view.Add(rule);
    RuleList shown = view.Rules();
    auto const isMarked = [](Rule const& rule) {
        return rule.recording_rule_state == RULE_NOT_SHOWABLE;
    };
    if (std::any_of(shown.begin(), shown.end(), isMarked))
        Say("\"adv\" marks rules that the basic view cannot show in full");
    if (view.HasAdvancedRules())
        Say("the file has rules that the basic view leaves out or cannot show in full; "
            "\"list\" without --basic shows them all");
    return shown;
}

/// Names the rules that are not about the text that is looked for, but take it as an address.
void NoteOthers(RuleList const& rules, RuleSelection const& selection) {
    RuleFilter const& filter = selection.filter;
    if (!filter.text || filter.from || filter.to || filter.recordTo || filter.isEnabled ||
        !selection.names.empty())
        return;
    std::vector<std::size_t> const places = MerelyTaking(rules, *filter.text);
    bool const isOne = places.size() == 1;
    if (!places.empty())
        Say("{} {} not mention {}, but {} it as an address; --matching-from and --matching-to show "
            "which side does",
            RulesText(rules, places), isOne ? "does" : "do", *filter.text,
            isOne ? "takes" : "take");
}

ExitCode List(Context const& context, Options const& options) {
    std::string digest;
    RuleList rules = LoadRules(context.path, digest);
    if (options.basic)
        rules = InBasicView(rules);
    RuleList wanted;
    std::vector<std::size_t> positions;
    std::vector<std::size_t> places = Matching(rules, options.selection);
    std::sort(places.begin(), places.end());
    for (std::size_t const place : places) {
        wanted.push_back(rules[place]);
        positions.push_back(place + 1);
    }
    NoteOthers(rules, options.selection);
    if (!wanted.empty() || !options.selection.IsGiven()) {
        PrintRules(wanted, positions, digest, context.json);
        return kExitYes;
    }
    if (context.json)
        PrintJson(nlohmann::ordered_json::array());
    throw Failure(kExitNoSuchRule, NoneMatches(rules, options.selection));
}

} // namespace

void AddList(CommandLine& line) {
    auto const options = std::make_shared<Options>();
    CLI::App& list =
        line.AddCommand("list", "Show the rules in order of evaluation", kHelp, options, List);
    AddSelection(list, options->selection, WithoutSelection::MeansAll, "--is-enabled,--enabled",
                 "--is-disabled,--disabled");
    list.add_flag("--basic", options->basic, "The basic view: each rule and its twin as one");
}

} // namespace callrecordingctl
