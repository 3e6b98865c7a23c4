// list: the rules in their order.

#include <algorithm>
#include <memory>

#include <fmt/format.h>

#include "CommandLine.h"
#include "Digest.h"
#include "Rules.h"
#include "commands/Registry.h"
#include "model/BasicView.h"
#include "output/RuleText.h"
#include "output/Table.h"

namespace callrecordingctl {
namespace {

constexpr char kHelp[] =
    R"(FROM and TO are call type and pattern, REC the recording type, FOR the duration.
On a terminal the table fits the width; elsewhere a rule is one line, unless the
environment variable COLUMNS says how wide. For scripts there is --json.
)";

struct Options {
    bool basic = false;
};

/// The rules as the basic view shows them; says what it does not show.
RuleList InBasicView(RuleList const& rules) {
    CallRecordingUtils::BasicView view;
    for (Rule const& rule : rules)
        view.Add(rule);
    RuleList shown = view.Rules();
    auto const isMarked = [](Rule const& rule) {
        return rule.recording_rule_state == CallRecordingUtils::RULE_NOT_SHOWABLE;
    };
    if (std::any_of(shown.begin(), shown.end(), isMarked))
        Say("\"adv\" marks rules that the basic view cannot show in full");
    if (view.HasAdvancedRules())
        Say("the file has rules that the basic view leaves out or cannot show in full; "
            "\"list\" without --basic shows them all");
    return shown;
}

ExitCode List(Context const& context, Options const& options) {
    std::string digest;
    RuleList rules = LoadRules(context.path, digest);
    std::string const state = StateToken(digest);
    if (options.basic)
        rules = InBasicView(rules);
    PrintRules(rules, state, context.json);
    return kExitYes;
}

} // namespace

void AddList(CommandLine& line) {
    auto const options = std::make_shared<Options>();
    CLI::App& list =
        line.AddCommand("list", "Show the rules in order of evaluation", kHelp,
                        [options](Context const& context) { return List(context, *options); });
    list.add_flag("--basic", options->basic, "The basic view: each rule and its twin as one");
}

} // namespace callrecordingctl
