/// @file
/// Fuzzes the analysis: the first line of an input is the digit of a call type and a pattern in the
/// stored form, the rest an address. What the automaton says of the address, the matcher must say,
/// of a typed call and of a party; and the call that is shown for a rule with the pattern, the rule
/// must decide.

#include "Fuzzing.h"

#include "analysis/RuleAnalysis.h"
#include "calls/Party.h"

using namespace CallRecordingUtils;
using fuzzing::Require;

namespace {

constexpr std::size_t kMemory = std::size_t{1} << 20;

/// Whether a telephony process can have read a party with these parts: the host in lower case, no
/// separators behind a "+", and so on.
bool IsParty(CallParty const& party) {
    CallParams const& parts = party.params;
    Party const read = ReadParty(parts.user, parts.host, parts.port);
    return read.user == parts.user && read.host == parts.host && read.port == parts.port;
}

/// Looks for an address that both the side and the address, read as a pattern, take.
void CompareWithMatcher(RuleSide const& side, std::string const& address, CallKind calls) {
    for (CallType const type : {CALL_TYPE_NUMBER, CALL_TYPE_SIP, CALL_TYPE_NUMBER2}) {
        CallParty const party = ReadCallParty(address, type);
        if (calls == CallKind::Parties && !IsParty(party))
            continue;
        RuleSide const exact{address, type};
        RuleSpace space(calls, kMemory);
        auto const rule = space.Add({side, {"*", CALL_TYPE_ANY}});
        auto const only = space.Add({exact, {"*", CALL_TYPE_ANY}});
        if (!space.IsReadable(rule) || !space.IsReadable(only))
            continue;
        Allowance allowance = space.BeginQuestion();
        CallFinding const both = space.Search({rule, only}, {}, allowance);
        if (both.outcome == Outcome::Undecided)
            continue;
        bool const isSatisfied = Satisfies(party, side, calls) && Satisfies(party, exact, calls);
        Require(!isSatisfied || both.outcome == Outcome::Found, "what the matcher takes is found",
                std::string(side.pattern) + " against " + address);
        if (both.outcome != Outcome::Found)
            continue;
        ExampleCall const call = ExampleOf(both.call, calls);
        Require(Satisfies(call.caller, side, calls) && Satisfies(call.caller, exact, calls),
                "what is found the matcher takes", std::string(side.pattern));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    auto const [text, address] = fuzzing::Texts(data, size);
    auto const type = static_cast<CallType>(text.empty() ? 0 : text[0] & 3);
    std::string const pattern = text.substr(text.empty() ? 0 : 1);
    for (CallKind const calls : {CallKind::Typed, CallKind::Parties}) {
        CompareWithMatcher({pattern, type}, address, calls);
        CallRecordingRuleParams rule;
        rule.caller_pattern = pattern;
        rule.caller_call_type = type;
        rule.called_pattern = "*";
        RuleParamsList const rules{rule};
        RuleReport const report = RuleAnalysis(rules, kMemory, calls).Report(0);
        Require(!report.call || DecidingPlace(rules, *report.call, calls) == 0,
                "the example is one", pattern);
    }
    return 0;
}
