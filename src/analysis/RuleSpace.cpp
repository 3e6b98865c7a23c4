// Keeps the rules of a space, and answers its question with the searches that it takes.

#include "analysis/RuleSpace.h"

#include <algorithm>

namespace CallRecordingUtils {
namespace {

// A step takes some ten nanoseconds, so that all questions together end within seconds, and longer
// only where there are many rules.
constexpr std::uint64_t kSteps = std::uint64_t{1} << 26;
constexpr std::uint64_t kStepsForRule = 4096;
constexpr std::uint64_t kFreeSteps = 8192;
constexpr std::size_t kFreeQuestions = 1000;
constexpr std::size_t kFreeQuestionsForRule = 4;
// One question may take this part of the steps that are left.
constexpr std::uint64_t kPartForQuestion = 8;
// A single side may take this part of the memory; the automata of all together half of it.
constexpr std::size_t kPartForSide = 8;
// What is held for a side and a rule beside the automata: texts, nodes of the map, an example.
constexpr std::size_t kBytesForSide = 250;

} // namespace

RuleSpace::RuleSpace(CallKind calls, std::size_t memory)
    : memory_(memory), steps_{kSteps, kSteps}, freeQuestions_(kFreeQuestions), pool_(calls) {}

RuleSpace::RuleId RuleSpace::Add(RuleSides const& sides) {
    SidePair const pair{AddSide(sides.caller), AddSide(sides.called)};
    bool const isReadable = problems_.count(pair.caller) == 0 && problems_.count(pair.called) == 0;
    rules_.push_back({pair, isReadable});
    for (std::uint64_t& steps : steps_)
        steps += kStepsForRule;
    freeQuestions_ += kFreeQuestionsForRule;
    return rules_.size() - 1;
}

SideId RuleSpace::AddSide(RuleSide const& side) {
    auto const [known, isNew] = sideOf_.emplace(std::pair(side.type, std::string(side.pattern)), 0);
    if (!isNew)
        return known->second;
    Reserve(kBytesForSide + side.pattern.size());
    std::size_t const left = memory_ / 2 - std::min(memory_ / 2, pool_.Bytes());
    auto const [automaton, problem] =
        ReadSide(side, pool_.Calls(), std::min(left, memory_ / kPartForSide));
    known->second = pool_.Add(automaton);
    if (problem)
        problems_.emplace(known->second, *problem);
    return known->second;
}

std::optional<Unreadable> RuleSpace::ProblemOf(RuleId rule, WhichSide side) const {
    SidePair const& sides = rules_[rule].sides;
    auto const problem = problems_.find(side == WhichSide::Caller ? sides.caller : sides.called);
    return problem != problems_.end() ? std::optional(problem->second) : std::nullopt;
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

bool RuleSpace::Matches(RuleId rule, FoundCall const& call) const {
    return pool_.Accepts(rules_[rule].sides.called, call.called) &&
           pool_.Accepts(rules_[rule].sides.caller, call.caller);
}

std::size_t RuleSpace::BytesLeft() const {
    return memory_ - std::min(memory_, pool_.Bytes() + cheapest_.Bytes() + reserved_);
}

Allowance RuleSpace::BeginQuestion(Importance importance) const {
    std::uint64_t const free = importance == kMain && freeQuestions_ > 0 ? kFreeSteps : 0;
    return {steps_[importance] / kPartForQuestion + free, BytesLeft()};
}

void RuleSpace::EndQuestion(Allowance const& begun, Allowance const& left, Importance importance) {
    std::uint64_t const taken = begun.steps - left.steps;
    std::uint64_t const free = importance == kMain && freeQuestions_ > 0 ? kFreeSteps : 0;
    freeQuestions_ -= free > 0 ? 1 : 0;
    steps_[importance] -= taken - std::min(taken, free);
}

/// Whether rule has the very sides of one of must.
bool RuleSpace::Covers(RuleId rule, RuleIds const& must) const {
    return std::any_of(
        must.begin(), must.end(), [&](RuleId other) { return HaveSameSides(rule, other); });
}

CallFinding RuleSpace::Search(RuleIds const& must, RuleIds const& avoid, Allowance& allowance) {
    Outlines caller;
    Outlines called;
    std::vector<SidePair> mustSides;
    for (RuleId const rule : must) {
        mustSides.push_back(rules_[rule].sides);
        caller &= pool_.OutlinesOf(mustSides.back().caller);
        called &= pool_.OutlinesOf(mustSides.back().called);
    }
    if (caller.AreEmpty() || called.AreEmpty())
        return {Outcome::None, {}};
    std::vector<SidePair> avoidSides;
    for (RuleId const id : avoid) {
        if (Covers(id, must))
            return {Outcome::None, {}};
        SidePair const& sides = rules_[id].sides;
        if (called.Meet(pool_.OutlinesOf(sides.called)) &&
            caller.Meet(pool_.OutlinesOf(sides.caller)))
            avoidSides.push_back(sides);
    }
    return SearchCall(pool_, mustSides, avoidSides, cheapest_, allowance);
}

} // namespace CallRecordingUtils
