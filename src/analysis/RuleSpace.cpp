// Keeps the rules of a space, and answers its question with the searches that it takes.

#include "analysis/RuleSpace.h"

#include <algorithm>

namespace CallRecordingUtils {
namespace {

// A step takes some nanoseconds, so that questions end within seconds with the usual memory.
constexpr std::uint64_t kStepsForByte = 8;
// One question may take this part of the steps that are left, so that no question, however hard,
// leaves nothing for the easy ones behind it.
constexpr std::uint64_t kPartForQuestion = 4;
// A single side may take this part of the memory; the automata of all together half of it.
constexpr std::size_t kPartForSide = 16;

CallType TypeOf(AddressKind kind) {
    return kind == kNumber ? CALL_TYPE_NUMBER : kind == kSip ? CALL_TYPE_SIP : CALL_TYPE_NUMBER2;
}

CallParty PartyOf(FoundAddress const& address) {
    CallParty party{{}, TypeOf(address.kind)};
    if (address.kind != kSip) {
        party.params.user = address.text;
        return party;
    }
    auto const pieces = SplitSipAddress(address.text);
    party.params.user = pieces->user;
    party.params.host = pieces->host;
    party.params.port = pieces->port == "*" ? "" : *pieces->port;
    return party;
}

/// All that a side of this type can accept.
SideAutomaton EverySide(std::int32_t type) {
    SideAutomaton::State none{{}, false};
    SideAutomaton::State every{{}, true};
    every.next.fill(SideAutomaton::kEvery);
    SideAutomaton side{{none, every}, {}};
    for (AddressKind const kind : {kNumber, kSip, kNumber2})
        if (type == CALL_TYPE_ANY || type == TypeOf(kind))
            side.start[kind] = SideAutomaton::kEvery;
    return side;
}

} // namespace

RuleSpace::RuleSpace(std::size_t memory) : memory_(memory), steps_(memory * kStepsForByte) {}

RuleSpace::RuleId RuleSpace::Add(RuleSides const& sides) {
    SidePair const pair{AddSide(sides.caller), AddSide(sides.called)};
    rules_.push_back({pair, !problems_[pair.caller] && !problems_[pair.called]});
    return rules_.size() - 1;
}

SideId RuleSpace::AddSide(RuleSide const& side) {
    auto const [known, isNew] = sideOf_.emplace(std::pair(side.type, std::string(side.pattern)), 0);
    if (!isNew)
        return known->second;
    std::size_t const left = memory_ / 2 - std::min(memory_ / 2, pool_.Bytes());
    std::size_t const mostStates =
        std::min(left, memory_ / kPartForSide) / sizeof(SideAutomaton::State);
    auto const [automaton, problem] = ReadSide(side, mostStates);
    known->second = pool_.Add(problem ? EverySide(side.type) : automaton);
    problems_.push_back(problem);
    return known->second;
}

std::optional<Unreadable> RuleSpace::ProblemOf(RuleId rule, WhichSide side) const {
    SidePair const& sides = rules_[rule].sides;
    return problems_[side == WhichSide::Caller ? sides.caller : sides.called];
}

bool RuleSpace::AcceptsNothing(RuleId rule, WhichSide side) const {
    SidePair const& sides = rules_[rule].sides;
    return pool_.AcceptsNothing(side == WhichSide::Caller ? sides.caller : sides.called);
}

bool RuleSpace::HaveSameSides(RuleId a, RuleId b) const {
    return rules_[a].sides.caller == rules_[b].sides.caller &&
           rules_[a].sides.called == rules_[b].sides.called;
}

bool RuleSpace::MayMeet(RuleId a, RuleId b) const {
    SidePair const& one = rules_[a].sides;
    SidePair const& other = rules_[b].sides;
    return pool_.OutlinesOf(one.called).Meet(pool_.OutlinesOf(other.called)) &&
           pool_.OutlinesOf(one.caller).Meet(pool_.OutlinesOf(other.caller));
}

/// An unreadable rule may match all calls of its types or none of them. A call that is found with
/// the worse of both assumptions is certain, and so is it that there is none with the better one.
RuleSpace::Answer RuleSpace::Find(std::vector<RuleId> const& must,
                                  std::vector<Rules> const& avoid) {
    bool const isMustReadable = std::all_of(
        must.begin(), must.end(), [this](RuleId rule) { return rules_[rule].isReadable; });
    bool isAvoidReadable = true;
    for (Rules const& rules : avoid)
        for (std::size_t i = 0; i < rules.count; ++i) {
            if (Covers(rules.ids[i], must))
                return {Outcome::None, std::nullopt};
            isAvoidReadable = isAvoidReadable && rules_[rules.ids[i]].isReadable;
        }
    if (isMustReadable) {
        Answer answer = Search(must, avoid, true);
        if (isAvoidReadable || answer.outcome != Outcome::None)
            return answer;
    }
    Answer possible = Search(must, avoid, false);
    if (possible.outcome == Outcome::Found)
        possible.outcome = Outcome::Undecided;
    return possible;
}

/// Whether rule has the very sides of one of must.
bool RuleSpace::Covers(RuleId rule, std::vector<RuleId> const& must) const {
    return std::any_of(
        must.begin(), must.end(), [&](RuleId other) { return HaveSameSides(rule, other); });
}

RuleSpace::Answer RuleSpace::Search(std::vector<RuleId> const& must,
                                    std::vector<Rules> const& avoid, bool avoidUnreadable) {
    Outlines caller;
    Outlines called;
    std::vector<SidePair> mustSides;
    for (RuleId const rule : must) {
        mustSides.push_back(rules_[rule].sides);
        caller &= pool_.OutlinesOf(mustSides.back().caller);
        called &= pool_.OutlinesOf(mustSides.back().called);
    }
    if (caller.AreEmpty() || called.AreEmpty())
        return {Outcome::None, std::nullopt};
    std::vector<SidePair> avoidSides;
    for (Rules const& rules : avoid)
        for (std::size_t i = 0; i < rules.count; ++i) {
            Rule const& rule = rules_[rules.ids[i]];
            if ((rule.isReadable || avoidUnreadable) &&
                called.Meet(pool_.OutlinesOf(rule.sides.called)) &&
                caller.Meet(pool_.OutlinesOf(rule.sides.caller)))
                avoidSides.push_back(rule.sides);
        }
    std::uint64_t const steps = steps_ / kPartForQuestion;
    Allowance allowance{steps, memory_ - std::min(memory_, pool_.Bytes())};
    CallFinding const finding = SearchCall(pool_, mustSides, avoidSides, allowance);
    steps_ -= steps - allowance.steps;
    if (finding.outcome != Outcome::Found)
        return {finding.outcome, std::nullopt};
    return {Outcome::Found,
            ExampleCall{PartyOf(finding.call.caller), PartyOf(finding.call.called)}};
}

} // namespace CallRecordingUtils
