// Says of each rule of a list what it does.

#include "analysis/RuleAnalysis.h"

#include <algorithm>
#include <iterator>

#include "analysis/SmallestCover.h"

namespace CallRecordingUtils {

RuleAnalysis::RuleAnalysis(RuleParamsList const& rules, std::size_t memory, CallKind calls)
    : rules_(rules, memory, calls), memory_(memory) {}

RuleReport RuleAnalysis::Report(std::size_t place, std::size_t mostTakers) {
    RuleReport report{RuleReport::kOff};
    if (!rules_.IsEnabled(place))
        return report;
    for (WhichSide const side : {WhichSide::Caller, WhichSide::Called})
        if (rules_.Space().AcceptsNothing(place, side)) {
            report.standing = RuleReport::kMatchesNothing;
            report.side = side;
            return report;
        }
    CallAnswer const& example = rules_.Example(place);
    if (example.outcome == Outcome::Undecided) {
        report.standing = RuleReport::kUndecided;
        report.why = example.why;
    } else if (example.outcome == Outcome::None) {
        report.standing = RuleReport::kHidden;
        report.takenBy = ReasonFor(place, report.isComplete);
    } else {
        report.standing = RuleReport::kDecides;
        report.call = rules_.Shown(example.call);
        AnalysedRules::Takers takers = rules_.TakersOf(place, mostTakers);
        report.takenBy = std::move(takers.places);
        report.isComplete = takers.isComplete;
    }
    return report;
}

/// Rules that never decide themselves are no reason.
std::vector<std::size_t> RuleAnalysis::ReasonFor(std::size_t place, bool& isSmallest) {
    auto const isHidden = [this](std::size_t rule) { return rules_.IsKnownToBeHidden(rule); };
    auto const matching = [&](FoundCall const& call) {
        auto rules = rules_.Matching(call, place);
        if (rules)
            rules->erase(std::remove_if(rules->begin(), rules->end(), isHidden), rules->end());
        return rules;
    };
    Cover cover =
        FindSmallestCover(rules_.Space(), {place}, {}, matching, rules_.Example(place).takers);
    isSmallest = cover.isSmallest;
    return std::move(cover.rules);
}

HiddenRule RuleAnalysis::Judge(std::size_t place, std::vector<std::size_t> const& takenBy) {
    HiddenRule hidden{true, std::nullopt, std::nullopt, false, false};
    // Returns whether other takes a call of the rule.
    auto const isTaken = [&](std::size_t other) {
        CallAnswer const taken = rules_.FindTaken(other, place);
        if (taken.outcome == Outcome::Undecided && !hidden.call)
            hidden.isTakenAlike.reset();
        if (taken.outcome != Outcome::Found)
            return false;
        hidden.isTakenAlike = false;
        hidden.call = rules_.Shown(taken.call);
        hidden.taker = other;
        return true;
    };
    // Rules that forbid come first: a call that is not recorded at all says most.
    AnalysedRules::Places const& forbidding = rules_.Forbidding();
    for (auto other = forbidding.begin(); !hidden.isForbidden && Records(rules_.Rule(place)) &&
                                          other != forbidding.end() && *other < place;
         ++other)
        hidden.isForbidden = rules_.Space().MayMeet(*other, place) && isTaken(*other);
    if (!hidden.isForbidden)
        rules_.ForEachMeeting(place, 0, place, [&](std::size_t other) {
            bool const isNew =
                !rules_.AreAlike(other, place) &&
                (!ForbidsRecording(rules_.Rules()[other]) || !Records(rules_.Rule(place)));
            return !isNew || !isTaken(other);
        });
    hidden.isBehindWider =
        takenBy.size() == 1 && !rules_.AreAlike(takenBy[0], place) && !IsCovered(takenBy[0], place);
    if (hidden.isBehindWider && !hidden.isForbidden)
        isTaken(takenBy[0]); // Of all calls that show it, one that this rule takes is the clearest.
    return hidden;
}

/// Whether every call that rule matches is matched by the other one, or that is undecided.
bool RuleAnalysis::IsCovered(std::size_t rule, std::size_t by) {
    RuleSpace& space = rules_.Space();
    if (!space.IsReadable(rule) || !space.IsReadable(by))
        return true;
    Allowance const begun = space.BeginQuestion();
    Allowance left = begun;
    Outcome const outcome = space.Search({rule}, {by}, left).outcome;
    space.EndQuestion(begun, left);
    return outcome != Outcome::Found;
}

/// What becomes of a call that all of must match if the rule at place, the first of these, is left
/// out: wanted is one that it decides and that is then decided otherwise.
Fate RuleAnalysis::FateWithout(std::size_t place, RuleSpace::RuleIds const& must,
                               FoundCall const& found) {
    ExampleCall const call = rules_.Shown(found);
    auto const decider = rules_.Deciding().PlaceFor(call);
    if (decider && *decider < place)
        return {Fate::kTaken, *decider};
    for (RuleSpace::RuleId const rule : must)
        if (!rules_.Space().IsReadable(rule) && !rules_.Matches(rule, call))
            return {Fate::kNotMatched, rule};
    if (decider != place)
        return {Fate::kUnclear};
    auto const next = rules_.Deciding().PlaceWithout(place, call);
    if (!HaveSameOutcome(rules_.Rule(next), rules_.Rule(place)))
        return {Fate::kWanted};
    return next ? Fate{Fate::kTaken, *next} : Fate{Fate::kUnclear};
}

/// A call that changes when the rule at place is left out. First: every call that it decides is
/// matched by rules behind it that do the same. Then, for each of those that do not: it is never
/// the next one.
CallAnswer RuleAnalysis::FindChange(std::size_t place) {
    std::size_t end = rules_.Rules().size();
    CallAnswer result{Outcome::None};
    auto const find = [&](RuleSpace::RuleIds const& must) {
        CallSought sought;
        sought.must = must;
        sought.fateOf = [&](FoundCall const& call) { return FateWithout(place, must, call); };
        sought.mayBeInTheWay = [] { return RuleSpace::RuleIds(); };
        return FindCall(rules_.Space(), sought);
    };
    if (Records(rules_.Rule(place))) {
        result = find({place});
        if (result.outcome != Outcome::None)
            return result;
        end = result.takers.empty() ? 0 : result.takers.back();
    }
    rules_.ForEachMeeting(place, place + 1, end, [&](std::size_t other) {
        if (!rules_.Deciding().Has(other) || rules_.AreAlike(other, place))
            return true;
        CallAnswer answer = find({place, other});
        if (answer.outcome != Outcome::None) {
            result = std::move(answer);
            return false;
        }
        result.takers.insert(result.takers.end(), answer.takers.begin(), answer.takers.end());
        return true;
    });
    if (result.outcome != Outcome::None)
        return result;
    std::sort(result.takers.begin(), result.takers.end());
    auto const unique = std::unique(result.takers.begin(), result.takers.end());
    result.takers.erase(unique, result.takers.end());
    return result;
}

Removal RuleAnalysis::WithoutRule(std::size_t place) {
    CallAnswer const change = FindChange(place);
    Removal removal{};
    if (change.outcome == Outcome::None) {
        removal.changesNothing = true;
        std::copy_if(change.takers.begin(), change.takers.end(), std::back_inserter(removal.heirs),
                     [place](std::size_t other) { return other > place; });
    } else if (change.outcome == Outcome::Found) {
        removal.changesNothing = false;
        removal.call = rules_.Shown(change.call);
        removal.decidedBy = rules_.Deciding().PlaceWithout(place, *removal.call);
    }
    return removal;
}

std::vector<NeedlessRule> RuleAnalysis::FindNeedless() {
    std::vector<NeedlessRule> needless;
    LeaveOutHidden(needless);
    LeaveOutDeciding(needless);
    for (NeedlessRule const& rule : needless)
        rules_.Deciding().TakeIn(rule.place);
    std::sort(needless.begin(), needless.end(),
              [](NeedlessRule const& a, NeedlessRule const& b) { return a.place < b.place; });
    return needless;
}

/// Rules that never decide can all go at once.
void RuleAnalysis::LeaveOutHidden(std::vector<NeedlessRule>& needless) {
    for (std::size_t place = 0; place < rules_.Rules().size(); ++place) {
        RuleReport const report = Report(place, 0);
        if (report.standing != RuleReport::kHidden ||
            Judge(place, report.takenBy).isTakenAlike != true)
            continue;
        needless.push_back({place, report.takenBy});
        rules_.Deciding().LeaveOut(place);
    }
}

/// Of the others each is judged with those gone that were judged before it.
void RuleAnalysis::LeaveOutDeciding(std::vector<NeedlessRule>& needless) {
    for (std::size_t place = 0; place < rules_.Rules().size(); ++place) {
        if (!rules_.Deciding().Has(place) || rules_.Example(place).outcome != Outcome::Found)
            continue;
        Removal const removal = WithoutRule(place);
        if (removal.changesNothing != true)
            continue;
        needless.push_back({place, removal.heirs});
        rules_.Deciding().LeaveOut(place);
    }
}

Proof RuleAnalysis::Prove(Claim const& claim) {
    return CallRecordingUtils::Prove(rules_, claim);
}

Gaps RuleAnalysis::FindGaps(Claim const& claim, std::size_t mostPatterns,
                            std::size_t mostExamples) {
    return CallRecordingUtils::FindGaps(rules_, claim, mostPatterns, mostExamples);
}

Explanation RuleAnalysis::Explain(std::size_t place, std::size_t mostPairs,
                                  std::size_t mostPatterns, std::size_t mostTakers) {
    Explanation explanation{Report(place, mostTakers), {false, {}, {}}, {}, true, {}, {}};
    if (explanation.report.standing == RuleReport::kDecides) {
        CallSet decided{
            place, SidesOf(rules_.Rules()[place]), rules_.MayMeet(place, 0, place), {}, true};
        decided.areMembers.resize(decided.rules.size(), false);
        explanation.decides = WriteCalls(rules_.Space(), decided, mostPatterns);
    }
    if (rules_.IsEnabled(place))
        AddLosses(place, mostTakers, explanation);
    CallKind const calls = rules_.Space().Calls();
    RuleParamsList changed = rules_.Rules();
    changed[place].recording_rule_state = RULE_DISABLED;
    explanation.ifGone = Compare(rules_.Rules(), changed, memory_, calls, mostPairs);
    changed = rules_.Rules();
    auto const rule = changed.begin() + static_cast<std::ptrdiff_t>(place);
    std::rotate(changed.begin(), rule, rule + 1);
    explanation.ifFirst = Compare(rules_.Rules(), changed, memory_, calls, mostPairs);
    auto const placeNow = [place](std::optional<std::size_t> there) {
        return !there ? there
                      : std::optional(*there == 0 ? place : *there - (*there <= place ? 1 : 0));
    };
    for (Difference& difference : explanation.ifFirst.differences)
        difference.there = placeNow(difference.there);
    for (UndecidedPair& pair : explanation.ifFirst.undecided) {
        pair.there = placeNow(pair.there);
        if (pair.isWhyThere)
            pair.why.rule = placeNow(pair.why.rule);
    }
    return explanation;
}

void RuleAnalysis::AddLosses(std::size_t place, std::size_t mostTakers, Explanation& explanation) {
    AnalysedRules::Takers const takers = rules_.TakersOf(place, mostTakers);
    explanation.areLossesComplete = takers.isComplete;
    for (std::size_t const taker : takers.places)
        if (auto const call = CallTaken(taker, place))
            explanation.losses.push_back({taker, *call});
}

std::optional<ExampleCall> RuleAnalysis::CallTaken(std::size_t taker, std::size_t place) {
    CallAnswer const taken = rules_.FindTaken(taker, place);
    return taken.outcome == Outcome::Found ? std::optional(rules_.Shown(taken.call)) : std::nullopt;
}

} // namespace CallRecordingUtils
