// Judges each rule by itself, and shows the nearest misses first.

#include "output/Verdicts.h"

#include <algorithm>
#include <numeric>

#include <fmt/format.h>

#include "calls/Miss.h"
#include "model/CallTypeNames.h"
#include "model/RuleSides.h"
#include "output/RuleText.h"
#include "output/Table.h"

namespace callrecordingctl {
namespace {

/// How one side of a call fares with one side of a rule.
struct SideVerdict {
    std::string reason; // Empty when the side matches.
    double nearness;
};

/// The pattern as it is matched: a SIP pattern without a port takes every port. Empty when it
/// matches nothing.
std::string MatchedPattern(RuleSide const& side) {
    if (side.type != CALL_TYPE_SIP)
        return std::string(side.pattern);
    auto const parts = SplitSipAddress(side.pattern);
    if (!parts || parts->HasPort())
        return parts ? std::string(side.pattern) : "";
    return fmt::format("{}@{}:*", parts->user, parts->host);
}

SideVerdict JudgeSide(CallSide const& side, char const* name, RuleSide const& rule) {
    auto const ruleType = static_cast<CallType>(rule.type);
    if (ruleType != side.Type() && ruleType != CALL_TYPE_ANY)
        return {fmt::format("{} is of type {}, not {}", name, CallTypeName(side.Type()),
                            CallTypeName(ruleType)),
                0};
    if (side.Satisfies(rule.pattern, ruleType))
        return {"", 1};
    std::string const text = SideText(std::string(rule.pattern), ruleType);
    std::string const pattern = MatchedPattern(rule);
    if (pattern.empty())
        return {fmt::format("{} does not match {}", name, text), 0};
    std::string_view const address = ruleType == CALL_TYPE_ANY ? side.User() : side.Address();
    Miss const miss = FindMiss(address, pattern);
    double const length = static_cast<double>(address.size()) + 1;
    return {fmt::format("{} does not match {}: {}", name, text, MissText(address, miss)),
            static_cast<double>(miss.position) / length};
}

std::string Joined(std::string const& a, std::string const& b) {
    return a + (a.empty() || b.empty() ? "" : "; ") + b;
}

std::vector<std::string> Row(Verdict const& verdict, Rule const& rule, std::size_t place) {
    return {std::to_string(place + 1), std::to_string(rule.callrecordingrule_id),
            verdict.decides ? "both sides match: this rule decides" : verdict.reason};
}

} // namespace

JudgedCall::JudgedCall(PartyOptions const& from, PartyOptions const& to)
    : from_(ReadCallParty(from.address, from.type)), to_(ReadCallParty(to.address, to.type)),
      call_(from_.params, from_.type, to_.params, to_.type) {}

std::vector<Verdict> JudgedCall::Judge(RuleList const& rules) const {
    std::vector<Verdict> verdicts;
    for (Rule const& rule : rules) {
        verdicts.push_back(Judge(rule));
        if (verdicts.back().decides)
            break;
    }
    return verdicts;
}

Verdict JudgedCall::Judge(Rule const& rule) const {
    if (Takes(rule, call_))
        return {true, "", 2};
    auto const [callerSide, calledSide] = SidesOf(rule);
    SideVerdict const caller = JudgeSide(call_.caller, "from", callerSide);
    SideVerdict const called = JudgeSide(call_.called, "to", calledSide);
    std::string reason = Joined(caller.reason, called.reason);
    if (rule.recording_rule_state != RULE_ENABLED)
        reason = "disabled; " + (reason.empty() ? "it would match if it were enabled" : reason);
    return {false, reason, caller.nearness + called.nearness};
}

void PrintNearest(std::vector<Verdict> const& verdicts, RuleList const& rules) {
    constexpr std::size_t kMost = 5;
    std::vector<std::size_t> places(verdicts.size());
    std::iota(places.begin(), places.end(), std::size_t{0});
    std::stable_sort(places.begin(), places.end(), [&verdicts](std::size_t a, std::size_t b) {
        return verdicts[a].nearness > verdicts[b].nearness;
    });
    std::size_t const shown = std::min(kMost, places.size());
    Table table({"#", "ID", "NEAREST FIRST"});
    for (std::size_t i = 0; i < shown; ++i)
        table.Add(Row(verdicts[places[i]], rules[places[i]], places[i]));
    table.Print();
    if (shown < places.size())
        fmt::print("and {} more, which --all shows\n", places.size() - shown);
}

void PrintAll(std::vector<Verdict> const& verdicts, RuleList const& rules) {
    Table table({"#", "ID", "OUTCOME", "DESCRIPTION"});
    for (std::size_t i = 0; i < verdicts.size(); ++i) {
        std::vector<std::string> row = Row(verdicts[i], rules[i], i);
        row.push_back(rules[i].description);
        table.Add(row);
    }
    table.Print();
}

nlohmann::ordered_json ToJson(std::vector<Verdict> const& verdicts, RuleList const& rules) {
    auto document = nlohmann::ordered_json::array();
    for (std::size_t i = 0; i < verdicts.size(); ++i)
        document.push_back({{"position", i + 1},
                            {"callrecordingrule_id", rules[i].callrecordingrule_id},
                            {"decides", verdicts[i].decides},
                            {"passed_over_because", verdicts[i].reason}});
    return document;
}

} // namespace callrecordingctl
