// list: the rules in their order.

#include <algorithm>
#include <cctype>
#include <memory>
#include <tuple>

#include <fmt/format.h>

#include "CommandLine.h"
#include "Rules.h"
#include "administration/inspection/Digest.h"
#include "calls/SideTexts.h"
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
    std::string grep;
    std::optional<std::string> from;
    std::optional<std::string> to;
    bool enabled = false;
    bool disabled = false;
};

bool ContainsText(std::string const& text, std::string const& part) {
    auto const isSame = [](char a, char b) {
        return std::tolower(static_cast<unsigned char>(a)) ==
               std::tolower(static_cast<unsigned char>(b));
    };
    return std::search(text.begin(), text.end(), part.begin(), part.end(), isSame) != text.end();
}

/// Whether the side of a rule takes the party at this address; every side does when none is given.
bool TakesParty(std::optional<std::string> const& address, std::string const& pattern,
                CallType type) {
    return !address || SideTexts(ReadParty(*address)).Satisfies(pattern, type);
}

bool IsWanted(Rule const& rule, Options const& options) {
    bool const isOn = rule.recording_rule_state == RULE_ENABLED;
    if ((options.enabled && !isOn) || (options.disabled && isOn))
        return false;
    std::string all;
    for (std::string const& cell : ListRow(rule, 0))
        all += cell + "\n";
    return ContainsText(all, options.grep) &&
           TakesParty(options.from, rule.caller_pattern, rule.caller_call_type) &&
           TakesParty(options.to, rule.called_pattern, rule.called_call_type);
}

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

ExitCode List(Context const& context, Options const& options) {
    std::string digest;
    RuleList rules = LoadRules(context.path, digest);
    std::string const state = StateToken(digest);
    if (options.basic)
        rules = InBasicView(rules);
    RuleList wanted;
    std::vector<std::size_t> positions;
    for (std::size_t i = 0; i < rules.size(); ++i)
        if (IsWanted(rules[i], options)) {
            wanted.push_back(rules[i]);
            positions.push_back(i + 1);
        }
    PrintRules(wanted, positions, state, context.json);
    return kExitYes;
}

} // namespace

void AddList(CommandLine& line) {
    auto const options = std::make_shared<Options>();
    CLI::App& list =
        line.AddCommand("list", "Show the rules in order of evaluation", kHelp, options, List);
    list.add_option("--grep", options->grep, "Only rules with this text in them")
        ->type_name("TEXT");
    for (auto const& [name, who, address] :
         {std::tuple("--matching-from", "calling", &options->from),
          std::tuple("--matching-to", "called", &options->to)})
        list.add_option(name, *address,
                        fmt::format("Only rules whose {} side takes this party", who))
            ->type_name("ADDR");
    list.add_flag("--enabled", options->enabled, "Only rules that are on");
    list.add_flag("--disabled", options->disabled, "Only rules that are off");
    list.add_flag("--basic", options->basic, "The basic view: each rule and its twin as one");
}

} // namespace callrecordingctl
