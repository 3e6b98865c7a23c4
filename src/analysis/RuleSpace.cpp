// Keeps the rules of a space, and answers its question with the searches that it takes.

#include "analysis/RuleSpace.h"

#include <algorithm>

namespace CallRecordingUtils {
namespace {

// A step takes some ten nanoseconds, so that all questions together end within seconds, and longer
// only where there are many rules.
constexpr std::uint64_t kSteps = std::uint64_t{1} << 25;
constexpr std::uint64_t kStepsForRule = 4096;
constexpr std::uint64_t kFreeSteps = 8192;
constexpr std::size_t kFreeQuestions = 1000;
constexpr std::size_t kFreeQuestionsForRule = 4;
// One question may take this part of the steps that are left.
constexpr std::uint64_t kPartForQuestion = 8;
// The automata may take this part of the memory; what is left is for the search.
constexpr std::size_t kPartForAutomata = 2;

} // namespace

RuleSpace::RuleSpace(CallKind calls, std::size_t memory)
    : memory_(memory), steps_{kSteps, kSteps}, freeQuestions_(kFreeQuestions),
      pool_(calls, memory / kPartForAutomata) {}

RuleSpace::RuleId RuleSpace::Add(RuleSides const& sides) {
    rules_.push_back({pool_.Add(sides.caller), pool_.Add(sides.called)});
    for (std::uint64_t& steps : steps_)
        steps += kStepsForRule;
    freeQuestions_ += kFreeQuestionsForRule;
    return rules_.size() - 1;
}

std::optional<Unreadable> RuleSpace::ProblemOf(RuleId rule, WhichSide side) {
    SidePair const& sides = rules_[rule];
    return pool_.ProblemOf(side == WhichSide::Caller ? sides.caller : sides.called);
}

bool RuleSpace::IsReadable(RuleId rule) {
    return !ProblemOf(rule, WhichSide::Caller) && !ProblemOf(rule, WhichSide::Called);
}

bool RuleSpace::AcceptsNothing(RuleId rule, WhichSide side) {
    SidePair const& sides = rules_[rule];
    return pool_.AcceptsNothing(side == WhichSide::Caller ? sides.caller : sides.called);
}

bool RuleSpace::HaveSameSides(RuleId a, RuleId b) const {
    return rules_[a].caller == rules_[b].caller && rules_[a].called == rules_[b].called;
}

bool RuleSpace::MayMeet(RuleId a, RuleId b) const {
    SidePair const& one = rules_[a];
    SidePair const& other = rules_[b];
    return pool_.OutlineOf(one.called).Meets(pool_.OutlineOf(other.called)) &&
           pool_.OutlineOf(one.caller).Meets(pool_.OutlineOf(other.caller));
}

bool RuleSpace::Matches(RuleId rule, FoundCall const& call) {
    return pool_.Accepts(rules_[rule].called, call.called) &&
           pool_.Accepts(rules_[rule].caller, call.caller);
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

CallFinding RuleSpace::Search(RuleIds const& must, RuleIds const& avoid, Allowance& allowance,
                              Prefer prefer) {
    SideOutline caller;
    SideOutline called;
    std::vector<SidePair> mustSides;
    for (RuleId const rule : must) {
        mustSides.push_back(rules_[rule]);
        caller &= pool_.OutlineOf(mustSides.back().caller);
        called &= pool_.OutlineOf(mustSides.back().called);
    }
    if (caller.IsEmpty() || called.IsEmpty())
        return {Outcome::None, {}};
    std::vector<SidePair> avoidSides;
    for (RuleId const id : avoid) {
        if (Covers(id, must))
            return {Outcome::None, {}};
        SidePair const& sides = rules_[id];
        if (called.Meets(pool_.OutlineOf(sides.called)) &&
            caller.Meets(pool_.OutlineOf(sides.caller)))
            avoidSides.push_back(sides);
    }
    return SearchCall(pool_, mustSides, avoidSides, cheapest_, allowance, prefer);
}

} // namespace CallRecordingUtils
