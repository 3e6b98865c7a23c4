// Asks the space of rules what each question comes down to.

#include "analysis/RuleAnalysis.h"

#include <algorithm>

#include "matching/Decision.h"

namespace CallRecordingUtils {

namespace {

bool Matches(CallRecordingRuleParams const& rule, ExampleCall const& call) {
    return Satisfies(call.caller, SidesOf(rule).caller) &&
           Satisfies(call.called, SidesOf(rule).called);
}

} // namespace

std::optional<std::size_t> DecidingPlace(RuleParamsList const& rules, ExampleCall const& call) {
    Call const asSeen(call.caller.params, call.caller.type, call.called.params, call.called.type);
    auto const found =
        std::find_if(rules.begin(), rules.end(), [&asSeen](CallRecordingRuleParams const& rule) {
            return Takes(rule, asSeen);
        });
    if (found == rules.end())
        return std::nullopt;
    return static_cast<std::size_t>(found - rules.begin());
}

RuleAnalysis::RuleAnalysis(RuleParamsList const& rules, std::size_t memory)
    : rules_(rules), mostBytes_(memory / 4), space_(memory), matches_(rules),
      examples_(rules.size()) {
    for (CallRecordingRuleParams const& rule : rules) {
        ids_.push_back(space_.Add(SidesOf(rule)));
        enabledBefore_.push_back(enabled_.size());
        if (rule.recording_rule_state != RULE_ENABLED)
            continue;
        enabled_.push_back(ids_.back());
        placesOfEnabled_.push_back(ids_.size() - 1);
    }
}

bool RuleAnalysis::IsAnalysable(std::size_t place) const {
    return space_.ProblemOf(ids_[place], WhichSide::Caller) != Unreadable::OutsideTheLanguage &&
           space_.ProblemOf(ids_[place], WhichSide::Called) != Unreadable::OutsideTheLanguage;
}

RuleSpace::Rules RuleAnalysis::EnabledBefore(std::size_t place) const {
    return {enabled_, enabledBefore_[place]};
}

/// A search for a call that the rule at place decides and all of those match. Where patterns stand
/// in the way that have no automaton, the matcher can still vouch for the one call to look at.
RuleAnalysis::Answer RuleAnalysis::Decided(std::size_t place,
                                           std::vector<RuleSpace::RuleId> const& those) {
    Answer answer = space_.Find(those, {EnabledBefore(place)});
    if (answer.outcome == Outcome::Undecided && answer.call &&
        DecidingPlace(rules_, *answer.call) == place)
        answer.outcome = Outcome::Found;
    return answer;
}

RuleAnalysis::Answer const& RuleAnalysis::Example(std::size_t place) {
    if (!examples_[place])
        examples_[place] = Decided(place, {ids_[place]});
    return *examples_[place];
}

RuleReport RuleAnalysis::Report(std::size_t place, std::size_t mostTakers) {
    if (rules_[place].recording_rule_state != RULE_ENABLED)
        return {RuleReport::kOff, {}, {}};
    for (WhichSide const side : {WhichSide::Caller, WhichSide::Called})
        if (space_.AcceptsNothing(ids_[place], side))
            return {RuleReport::kMatchesNothing, {}, {}, side};
    Answer const& answer = Example(place);
    switch (answer.outcome) {
    case Outcome::Found: return {RuleReport::kDecides, answer.call, TakersOf(place, mostTakers)};
    case Outcome::None: return {RuleReport::kHidden, {}, TakersOf(place, rules_.size())};
    case Outcome::Undecided: break;
    }
    for (WhichSide const side : {WhichSide::Caller, WhichSide::Called})
        if (space_.ProblemOf(ids_[place], side) == Unreadable::OutsideTheLanguage)
            return {RuleReport::kNotAnalysable, {}, {}, side};
    return {RuleReport::kUndecided, {}, {}};
}

std::vector<std::size_t> RuleAnalysis::TakersOf(std::size_t place, std::size_t most) {
    std::vector<std::size_t> takers;
    for (std::size_t i = 0; i < enabledBefore_[place] && takers.size() < most; ++i)
        if (Takes(placesOfEnabled_[i], place))
            takers.push_back(placesOfEnabled_[i]);
    return takers;
}

/// Whether taker decides a call that the rule at place matches.
bool RuleAnalysis::Takes(std::size_t taker, std::size_t place) {
    if (!space_.MayMeet(ids_[taker], ids_[place]) || Example(taker).outcome == Outcome::None)
        return false;
    if (DoExamplesShow(taker, place))
        return true;
    Answer const answer = Decided(taker, {ids_[taker], ids_[place]});
    // Where the rule at place has no automaton, the call may be one that it does not match.
    return answer.outcome == Outcome::Found && Matches(rules_[place], *answer.call);
}

/// Most often the examples of both show it, or a call put together of a side of each.
bool RuleAnalysis::DoExamplesShow(std::size_t taker, std::size_t place) {
    Answer const& taken = Example(taker);
    Answer const& own = Example(place);
    if (taken.outcome != Outcome::Found || ExampleMatches::BytesFor(rules_.size()) > mostBytes_)
        return false;
    auto const isShownBy = [&](std::size_t from, Answer const& caller, std::size_t to,
                               Answer const& called) {
        auto const& callers = matches_.Of(WhichSide::Caller, from, caller.call->caller);
        auto const& calleds = matches_.Of(WhichSide::Called, to, called.call->called);
        return ExampleMatches::FirstOfBoth(callers, calleds) == taker &&
               Matches(rules_[place], {caller.call->caller, called.call->called});
    };
    if (isShownBy(taker, taken, taker, taken))
        return true;
    return own.outcome == Outcome::Found &&
           (isShownBy(taker, taken, place, own) || isShownBy(place, own, taker, taken));
}

Proof RuleAnalysis::Prove(Claim const& claim) {
    RuleSpace::RuleId const calls = space_.Add(claim.calls);
    Proof proof{true, {}, {}};
    std::size_t before = claim.outcome == Claim::kByRule ? enabledBefore_[claim.rule] : 0;
    if (claim.outcome == Claim::kNotRecorded) {
        before = enabled_.size();
    } else {
        // Every call must be matched by the rule, or by any.
        std::vector<RuleSpace::RuleId> rule;
        if (claim.outcome == Claim::kByRule &&
            rules_[claim.rule].recording_rule_state == RULE_ENABLED)
            rule.push_back(ids_[claim.rule]);
        auto const& matching = claim.outcome == Claim::kRecorded ? enabled_ : rule;
        if (Refutes(claim, space_.Find({calls}, {{matching, matching.size()}}), proof))
            return proof;
    }
    // And none by those that must not have it.
    for (std::size_t i = 0; i < before; ++i)
        if (space_.MayMeet(calls, enabled_[i]) &&
            Refutes(claim, space_.Find({calls, enabled_[i]}, {}), proof))
            return proof;
    return proof;
}

/// Takes answer, a search for a call that makes claim false, into proof. Returns whether the claim
/// is false for certain.
bool RuleAnalysis::Refutes(Claim const& claim, Answer const& answer, Proof& proof) const {
    if (answer.outcome == Outcome::None)
        return false;
    // Where a side of claim has no automaton, the call may be another one.
    if (answer.call && Satisfies(answer.call->caller, claim.calls.caller) &&
        Satisfies(answer.call->called, claim.calls.called)) {
        auto const decider = DecidingPlace(rules_, *answer.call);
        bool const holds = claim.outcome == Claim::kRecorded      ? decider.has_value()
                           : claim.outcome == Claim::kNotRecorded ? !decider
                                                                  : decider == claim.rule;
        if (!holds) {
            proof = {false, answer.call, decider};
            return true;
        }
    }
    proof.proved.reset();
    return false;
}

} // namespace CallRecordingUtils
