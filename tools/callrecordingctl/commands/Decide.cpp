// decide: the decision for one call, and how each rule came to it.

#include <memory>

#include <fmt/format.h>

#include "CommandLine.h"
#include "Rules.h"
#include "commands/Registry.h"
#include "inspection/CallAddress.h"
#include "matching/Decision.h"
#include "model/SipAddress.h"
#include "output/RuleText.h"
#include "output/Table.h"

namespace callrecordingctl {
namespace {

using namespace CallRecordingUtils;

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
};

/// The addresses are compared as they are given, which surprises where a pattern holds an escape or
/// an address was pasted from elsewhere.
void WarnOfAddress(PartyOptions const& side, char const* option) {
    if (side.address.find_first_of("*?,-!") != std::string::npos)
        Say("{}: in an address * ? , - ! are matched by a ? or * of a pattern only; an "
            "escape such as \\* is stored as a code and matches that code (# ^ @ % :)",
            option);
}

/// Why one side of the rule does not match; empty when it does.
std::string Mismatch(CallSide const& side, CallType type, char const* name,
                     std::string const& pattern, CallType ruleType) {
    if (ruleType != type && ruleType != CALL_TYPE_ANY)
        return fmt::format("{} is of type {}, not {}", name, CallTypeName(type),
                           CallTypeName(ruleType));
    if (side.Satisfies(pattern, ruleType))
        return "";
    return fmt::format("{} does not match {}", name, SideText(pattern, ruleType));
}

/// Takes off what call records write around an address, and says so: the telephone system may hand
/// it over differently.
PartyOptions Cleaned(PartyOptions const& side, char const* option) {
    CallAddress const cleaned = CleanCallAddress(side.address);
    if (cleaned.cleanings.any())
        Say("{}: taken for {} (left out: {})", option, cleaned.text, Words(cleaned.cleanings));
    return {cleaned.text, side.type};
}

struct Verdict {
    std::string reason; // Why the rule is passed over.
    bool decides;
};

/// A call as the command line gives it, with what decides it.
class DecidedCall {
  public:
    DecidedCall(PartyOptions const& from, PartyOptions const& to)
        : from_(ReadCallParty(from.address, from.type)), to_(ReadCallParty(to.address, to.type)),
          call_(from_.params, from_.type, to_.params, to_.type) {}

    /// Every rule in order, up to the one that decides, and why it was passed over.
    std::vector<Verdict> Judge(RuleList const& rules) const {
        std::vector<Verdict> verdicts;
        for (Rule const& rule : rules) {
            verdicts.push_back(Judge(rule));
            if (verdicts.back().decides)
                break;
        }
        return verdicts;
    }

  private:
    Verdict Judge(Rule const& rule) const {
        if (Takes(rule, call_))
            return {"", true};
        std::string reason =
            Mismatch(call_.caller, from_.type, "from", rule.caller_pattern, rule.caller_call_type);
        std::string const other =
            Mismatch(call_.called, to_.type, "to", rule.called_pattern, rule.called_call_type);
        reason += (reason.empty() || other.empty() ? "" : "; ") + other;
        if (rule.recording_rule_state != RULE_ENABLED)
            reason = "disabled; " + (reason.empty() ? "it would match if it were enabled" : reason);
        return {reason, false};
    }

    CallParty from_, to_; // The call borrows their texts.
    Call call_;
};

void PrintExplanation(std::vector<Verdict> const& verdicts, RuleList const& rules) {
    Table table({"#", "ID", "OUTCOME"});
    for (std::size_t i = 0; i < verdicts.size(); ++i)
        table.Add(
            {std::to_string(i + 1), std::to_string(rules[i].callrecordingrule_id),
             verdicts[i].decides ? "both sides match: this rule decides" : verdicts[i].reason});
    table.Print();
}

nlohmann::ordered_json VerdictsToJson(std::vector<Verdict> const& verdicts, RuleList const& rules) {
    auto document = nlohmann::ordered_json::array();
    for (std::size_t i = 0; i < verdicts.size(); ++i)
        document.push_back({{"position", i + 1},
                            {"callrecordingrule_id", rules[i].callrecordingrule_id},
                            {"decides", verdicts[i].decides},
                            {"passed_over_because", verdicts[i].reason}});
    return document;
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
        document["rules"] = VerdictsToJson(verdicts, rules);
    PrintJson(document);
}

ExitCode Decide(Context const& context, Options const& options) {
    RuleList const rules = LoadRules(context.path);
    PartyOptions const from = Cleaned(options.from, "--from");
    PartyOptions const to = Cleaned(options.to, "--to");
    std::vector<Verdict> const verdicts = DecidedCall(from, to).Judge(rules);
    bool const isRecorded = !verdicts.empty() && verdicts.back().decides;
    if (!isRecorded) {
        WarnOfAddress(from, "--from");
        WarnOfAddress(to, "--to");
    }
    if (context.json)
        PrintAsJson(verdicts, rules, options.explain);
    else if (options.explain && !verdicts.empty())
        PrintExplanation(verdicts, rules);
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
    decide.add_flag("--explain", options->explain, "Say of every rule why it was passed over");
}

} // namespace callrecordingctl
