/// @file
/// Fuzzes the analysis: the first line of an input is the digit of a call type and a pattern in the
/// entry form, the rest an address. What the automaton says of the address, the matcher must say;
/// and the call that is shown for a rule with the pattern, the rule must decide.

#include "Fuzzing.h"

#include "analysis/AutomatonPool.h"
#include "analysis/RuleAnalysis.h"
#include "matching/CallSide.h"
#include "validation/SidePattern.h"

using namespace CallRecordingUtils;
using fuzzing::Require;

namespace {

constexpr std::size_t kMemory = std::size_t{1} << 20;

/// One side of each kind of call that address can be.
std::vector<std::pair<AddressKind, CallParty>> PartiesOf(std::string const& address) {
    std::vector<std::pair<AddressKind, CallParty>> parties{
        {kNumber, {{address, {}, "", ""}, CALL_TYPE_NUMBER}},
        {kNumber2, {{address, {}, "", ""}, CALL_TYPE_NUMBER2}}};
    auto const pieces = SplitSipAddress(address);
    if (pieces && pieces->HasPort() && pieces->user.find('@') == std::string_view::npos)
        parties.push_back({kSip,
                           {{std::string(pieces->user),
                             {},
                             std::string(pieces->host),
                             std::string(*pieces->port)},
                            CALL_TYPE_SIP}});
    return parties;
}

void CompareWithMatcher(std::string const& pattern, CallType type, std::string const& address) {
    auto const [automaton, problem] = ReadSide({pattern, type}, 2000);
    if (problem)
        return;
    AutomatonPool pool;
    SideId const side = pool.Add(automaton);
    for (auto const& [kind, party] : PartiesOf(address)) {
        CallSide const asSeen(party.params, party.type);
        bool const isSatisfied =
            asSeen.MaySatisfy(pattern, type) && asSeen.Satisfies(pattern, type);
        // A port holds no "@".
        if (party.params.port.find('@') == std::string::npos)
            Require(isSatisfied == pool.Accepts(side, kind, address), "matcher and automaton agree",
                    pattern + " against " + address);
        Require(!isSatisfied || !pool.AcceptsNothing(side), "something is accepted", pattern);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    auto const [text, address] = fuzzing::Texts(data, size);
    auto const type = static_cast<CallType>(text.empty() ? 0 : text[0] & 3);
    std::string const entry = text.substr(text.empty() ? 0 : 1);
    StoredPattern const stored = ToStored(entry, type);
    std::string const& pattern = stored.problem ? entry : stored.stored;
    CompareWithMatcher(pattern, type, address);
    CallRecordingRuleParams rule;
    rule.caller_pattern = pattern;
    rule.caller_call_type = type;
    rule.called_pattern = "*";
    RuleParamsList const rules{rule};
    RuleReport const report = RuleAnalysis(rules, kMemory).Report(0);
    Require(!report.call || DecidingPlace(rules, *report.call) == 0, "the example is one", pattern);
    return 0;
}
