/// @file
/// decide: the decision for one call, and how each rule came to it.

#include "Commands.h"

#include <fmt/format.h>

#include <callrecordingutils/CCallRecordingAssistant.h>

#include "RuleText.h"
#include "Table.h"
#include "model/SipAddress.h"

namespace callrecordingctl {
namespace {

using CallRecordingUtils::CCallRecordingAssistant;

using Party = CallRecordingUtils::CallParty;

/// The addresses are compared as they are given, which surprises where a pattern holds an escape or
/// an address was pasted from elsewhere.
void WarnOfAddress(CallSide const& side, char const* option) {
    if (side.address.compare(0, 4, "sip:") == 0 || side.address.compare(0, 5, "sips:") == 0)
        Say("{}: \"sip:\" is taken for a part of the user; leave it out\n", option);
    if (side.address.find_first_of("*?,-!") != std::string::npos)
        Say("{}: in an address * ? , - ! are matched by a ? or * of a pattern only; an "
            "escape such as \\* is stored as a code and matches that code (# ^ @ % :)\n",
            option);
}

/// Why one side of the rule does not match; empty when it does.
std::string Mismatch(CCallRecordingAssistant const& assistant, Party const& party, char const* side,
                     std::string const& pattern, CallType ruleType) {
    if (assistant.IsSideMatched(party.params, party.type, pattern, ruleType))
        return "";
    if (ruleType != party.type && ruleType != CALL_TYPE_ANY)
        return fmt::format("{} is of type {}, not {}", side, CallTypeName(party.type),
                           CallTypeName(ruleType));
    return fmt::format("{} does not match {}", side, SideText(pattern, ruleType));
}

struct Verdict {
    std::string reason; // Why the rule is passed over.
    bool decides;
};

Verdict Judge(CCallRecordingAssistant const& assistant, Party const& from, Party const& to,
              Rule const& rule) {
    std::string reason =
        Mismatch(assistant, from, "from", rule.caller_pattern, rule.caller_call_type);
    std::string const other =
        Mismatch(assistant, to, "to", rule.called_pattern, rule.called_call_type);
    reason += (reason.empty() || other.empty() ? "" : "; ") + other;
    bool const isEnabled = rule.recording_rule_state == CallRecordingUtils::RULE_ENABLED;
    if (isEnabled && reason.empty())
        return {"", true};
    if (!isEnabled)
        reason = "disabled; " + (reason.empty() ? "it would match if it were enabled" : reason);
    return {reason, false};
}

/// Every rule in order, up to the one that decides, and why it was passed over.
std::vector<Verdict> Judge(CCallRecordingAssistant const& assistant, Party const& from,
                           Party const& to, RuleList const& rules) {
    std::vector<Verdict> verdicts;
    for (Rule const& rule : rules) {
        verdicts.push_back(Judge(assistant, from, to, rule));
        if (verdicts.back().decides)
            break;
    }
    return verdicts;
}

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

} // namespace

ExitCode Decide(CallSide const& from, CallSide const& to, bool explain, bool json) {
    RuleStore store;
    RuleList const rules = store.Load();
    CCallRecordingAssistant assistant(false);
    Party const caller = CallRecordingUtils::ReadCallParty(from.address, from.type);
    Party const called = CallRecordingUtils::ReadCallParty(to.address, to.type);
    Rule rule;
    bool const isRecorded = assistant.IsCallRecordingAllowed(caller.params, caller.type,
                                                             called.params, called.type, &rule);
    if (!isRecorded) {
        WarnOfAddress(from, "--from");
        WarnOfAddress(to, "--to");
    }
    std::vector<Verdict> const verdicts = Judge(assistant, caller, called, rules);
    if (json) {
        nlohmann::ordered_json document{{"recorded", isRecorded}, {"rule", nullptr}};
        if (isRecorded)
            document["rule"] = ToJson(rule, verdicts.size());
        if (explain)
            document["rules"] = VerdictsToJson(verdicts, rules);
        PrintJson(document);
    } else {
        if (explain && !verdicts.empty())
            PrintExplanation(verdicts, rules);
        fmt::print("{}\n", isRecorded ? DecisionText(rule, verdicts.size())
                                      : "not recorded: no enabled rule matches");
    }
    return isRecorded ? EXIT_CODE_YES : EXIT_CODE_NO;
}

} // namespace callrecordingctl
