// decide: the decision for one call, and how each rule came to it.

#include <memory>

#include <fmt/format.h>

#include "CommandLine.h"
#include "Rules.h"
#include "commands/Registry.h"
#include "inspection/CallAddress.h"
#include "output/RuleText.h"
#include "output/Table.h"
#include "output/Verdicts.h"
#include "text/Printable.h"

namespace callrecordingctl {
namespace {

constexpr char kHelp[] =
    R"(ADDR is a number, or user@host[:port] for SIP. What call records write around
an address (sip:, tel:, <>, a name, blanks and dashes in a number) is taken off,
and the output says so.
Example: callrecordingctl decide --from alice@pbx:5060 --to 0123 --explain
)";

struct Options {
    PartyOptions from;
    PartyOptions to;
    bool explain = false;
    bool all = false;
};

/// The addresses are compared as they are given, which surprises where a pattern holds an escape or
/// an address was pasted from elsewhere.
void WarnOfAddress(PartyOptions const& side, char const* option) {
    if (side.address.find_first_of("*?,-!") != std::string::npos)
        Say("{}: in an address * ? , - ! are matched by a ? or * of a pattern only; an "
            "escape such as \\* is stored as a code and matches that code (# ^ @ % :)",
            option);
}

/// Takes off what call records write around an address, and says so: the telephone system may hand
/// it over differently.
PartyOptions Cleaned(PartyOptions const& side, char const* option) {
    CallAddress const cleaned = CleanCallAddress(side.address);
    if (cleaned.cleanings.any())
        Say("{}: taken for {} (left out: {})", option, cleaned.text, Words(cleaned.cleanings));
    return {cleaned.text, side.type};
}

std::string DecisionText(Rule const& rule, std::size_t position) {
    auto const part = [](char const* name, std::string const& text) {
        return text.empty() ? "" : fmt::format("{}{}", name, text);
    };
    return Printable(fmt::format(
        "recorded by rule {} (position {}): type {}{}{}{}", rule.callrecordingrule_id, position,
        static_cast<int>(rule.call_recording_type), part(", to ", rule.record_to),
        part(", duration ", rule.recording_duration), part(" - ", rule.description)));
}

void PrintAsJson(std::vector<Verdict> const& verdicts, RuleList const& rules, bool explain) {
    bool const isRecorded = !verdicts.empty() && verdicts.back().decides;
    nlohmann::ordered_json document{{"recorded", isRecorded}, {"rule", nullptr}};
    if (isRecorded)
        document["rule"] = ToJson(rules[verdicts.size() - 1], verdicts.size());
    if (explain)
        document["rules"] = ToJson(verdicts, rules);
    PrintJson(document);
}

ExitCode Decide(Context const& context, Options const& options) {
    RuleList const rules = LoadRules(context.path);
    PartyOptions const from = Cleaned(options.from, "--from");
    PartyOptions const to = Cleaned(options.to, "--to");
    std::vector<Verdict> const verdicts = JudgedCall(from, to).Judge(rules);
    bool const isRecorded = !verdicts.empty() && verdicts.back().decides;
    if (!isRecorded) {
        WarnOfAddress(from, "--from");
        WarnOfAddress(to, "--to");
    }
    if (context.json)
        PrintAsJson(verdicts, rules, options.explain);
    else if (options.explain && !verdicts.empty())
        (options.all ? PrintAll : PrintNearest)(verdicts, rules);
    if (!context.json)
        fmt::print("{}\n", isRecorded ? DecisionText(rules[verdicts.size() - 1], verdicts.size())
                                      : "not recorded: no enabled rule matches");
    return isRecorded ? kExitYes : kExitNo;
}

} // namespace

void AddDecide(CommandLine& line) {
    auto const options = std::make_shared<Options>();
    CLI::App& decide =
        line.AddCommand("decide", "Say whether a call is recorded, by which rule, and why", kHelp,
                        [options](Context const& context) { return Decide(context, *options); });
    AddParty(decide, options->from, "from", "calling");
    AddParty(decide, options->to, "to", "called");
    CLI::Option* const explain =
        decide.add_flag("--explain", options->explain,
                        "Say why rules were passed over, and where the\naddress and the pattern "
                        "part; the nearest first");
    decide
        .add_flag("--all", options->all,
                  "With --explain: all rules up to the one that\ndecides, with descriptions")
        ->needs(explain);
}

} // namespace callrecordingctl
