// decide: the decision for one call, and how each rule came to it.

#include <memory>

#include <fmt/format.h>

#include "CommandLine.h"
#include "Rules.h"
#include "calls/AskedSide.h"
#include "calls/RuleFit.h"
#include "calls/RuleSet.h"
#include "output/RuleText.h"
#include "output/Screen.h"
#include "output/Verdicts.h"
#include "text/Printable.h"
#include "json/CallJson.h"

namespace callrecordingctl {
namespace {

constexpr char kHelp[] =
    R"(ADDR is what the telephone system has: a number, a SIP or tel URI, also with a
name before it. It is read as a party with user, host and port, and each rule
looks at the part that its call type names. With a type it is a typed question
instead, as the C++ class asks it: nothing is left out or decoded. The two sides
may differ in this; a message says what was asked.
--explain shows the rules before the one that decides, and below it what would
become of the call without that one.
The exit status is 0 if the call is recorded, and 1 if no rule takes it or the
rule that does forbids recording.
Example: callrecordingctl decide --from alice@pbx:5060 --to 0123 --explain
)";

struct Options {
    AddressOptions from;
    AddressOptions to;
    bool explain = false;
    bool all = false;
};

struct Question {
    AskedSide from, to;
    PartyCall AsCall() const { return {from.texts, to.texts}; }
};

/// Characters of a typed address are not replaced by codes, which surprises where a pattern holds
/// an escape.
void WarnOfTyped(AskedSide const& side, char const* option) {
    if (side.type && side.address.find_first_of("*?,-!") != std::string::npos)
        Say("{}: in a typed address * ? , - ! are matched by a ? or * of a pattern only; an "
            "escape such as \\* is stored as a code and matches that code (# ^ @ % :)",
            option);
}

std::string DecisionText(Rule const& rule, std::size_t position) {
    if (ForbidsRecording(rule))
        return fmt::format("not recorded: rule {} says never (position {}){}{}",
                           rule.callrecordingrule_id, position,
                           rule.description.empty() ? "" : " - ", rule.description);
    auto const part = [](char const* name, std::string const& text) {
        return text.empty() ? "" : fmt::format("{}{}", name, text);
    };
    return fmt::format("recorded by rule {} (position {}): type {}{}{}{}",
                       rule.callrecordingrule_id, position,
                       static_cast<int>(rule.call_recording_type), part(", to ", rule.record_to),
                       part(", duration ", rule.recording_duration), part(" - ", rule.description));
}

/// The rule that would take the call if the deciding one were off; null if none would.
Rule const* Next(RuleList const& rules, std::size_t deciding, PartyCall const& call) {
    for (std::size_t i = deciding + 1; i < rules.size(); ++i)
        if (FitOf(rules[i], call, {"from", "to"}).Takes())
            return &rules[i];
    return nullptr;
}

void PrintAsJson(RuleSet const& rules, Rule const* deciding, Question const& question,
                 bool explain) {
    nlohmann::ordered_json document{
        {"recorded", deciding != nullptr && !ForbidsRecording(*deciding)},
        {"rule", nullptr},
        {"asked", {{"from", ToJson(question.from)}, {"to", ToJson(question.to)}}}};
    if (deciding != nullptr)
        document["rule"] = ToJson(*deciding, rules.PlaceOf(*deciding) + 1);
    if (explain) {
        document["rules"] =
            ToJson(JudgeUpToDeciding(rules.Rules(), question.AsCall()), rules.Rules());
        document["next"] = nullptr;
        Rule const* const next =
            deciding != nullptr ? Next(rules.Rules(), rules.PlaceOf(*deciding), question.AsCall())
                                : nullptr;
        if (next != nullptr)
            document["next"] = ToJson(*next, rules.PlaceOf(*next) + 1);
    }
    PrintJson(document);
}

void PrintAsText(RuleSet const& rules, Rule const* deciding, Question const& question,
                 Options const& options) {
    if (options.explain && !rules.Rules().empty())
        (options.all ? PrintAll : PrintNearest)(JudgeUpToDeciding(rules.Rules(), question.AsCall()),
                                                rules.Rules());
    PrintLines("{}\n", deciding != nullptr
                           ? Printable(DecisionText(*deciding, rules.PlaceOf(*deciding) + 1))
                           : "not recorded: no enabled rule matches");
    if (!options.explain || deciding == nullptr)
        return;
    Rule const* const next = Next(rules.Rules(), rules.PlaceOf(*deciding), question.AsCall());
    PrintLines("if rule {} were off: {}\n", deciding->callrecordingrule_id,
               next != nullptr ? Printable(DecisionText(*next, rules.PlaceOf(*next) + 1))
                               : "not recorded: no other enabled rule matches");
}

ExitCode Decide(Context const& context, Options const& options) {
    RuleSet const rules(LoadRules(context.path));
    Question const question{ReadAskedSide(options.from.address, options.from.type),
                            ReadAskedSide(options.to.address, options.to.type)};
    SayNote(Printable(fmt::format("asked about a call from {} to {}", Description(question.from),
                                  Description(question.to))));
    Rule const* const deciding = rules.Deciding(question.AsCall());
    if (deciding == nullptr) {
        WarnOfTyped(question.from, "--from");
        WarnOfTyped(question.to, "--to");
    }
    if (context.json)
        PrintAsJson(rules, deciding, question, options.explain);
    else
        PrintAsText(rules, deciding, question, options);
    return deciding != nullptr && !ForbidsRecording(*deciding) ? kExitYes : kExitNo;
}

} // namespace

void AddDecide(CommandLine& line) {
    auto const options = std::make_shared<Options>();
    CLI::App& decide = line.AddCommand(
        "decide", "Say whether a call is recorded, by which rule, and why", kHelp, options, Decide);
    AddAddress(decide, options->from, "from", "calling");
    AddAddress(decide, options->to, "to", "called");
    CLI::Option* const explain =
        decide.add_flag("--explain", options->explain,
                        "Say why rules were passed over, and where the\naddress and the pattern "
                        "part, the nearest first;\nand what would take the call if the rule that "
                        "decides\nwere off");
    decide
        .add_flag("--all", options->all,
                  "With --explain: all rules up to the one that\ndecides, with descriptions")
        ->needs(explain);
}

} // namespace callrecordingctl
