// Asks about the rules of a list one by one.

#include "analysis/AnalysedRules.h"

#include <algorithm>
#include <map>
#include <string_view>
#include <tuple>

namespace CallRecordingUtils {

AnalysedRules::AnalysedRules(RuleParamsList const& rules, std::size_t memory, CallKind calls)
    : rules_(rules), space_(calls, memory), decider_(rules, calls), examples_(rules.size()) {
    NumberOutcomes();
    for (std::size_t place = 0; place < rules.size(); ++place) {
        RuleSpace::RuleId const id = space_.Add(SidesOf(rules[place]));
        if (!IsEnabled(place))
            continue;
        SidePair const& sides = space_.SidesIn(id);
        meeting_[0].Add(static_cast<std::uint32_t>(place), space_.Pool().OutlineOf(sides.called));
        meeting_[1].Add(static_cast<std::uint32_t>(place), space_.Pool().OutlineOf(sides.caller));
    }
    space_.Reserve(rules.size() * (CallDecider::kBytesForRule + sizeof(examples_[0])) +
                   meeting_[0].Bytes() + meeting_[1].Bytes());
}

void AnalysedRules::NumberOutcomes() {
    using Effect = std::tuple<std::int32_t, std::string_view, std::string_view>;
    std::map<Effect, std::uint32_t> numbers;
    for (std::size_t place = 0; place < rules_.size(); ++place) {
        CallRecordingRuleParams const& rule = rules_[place];
        bool const isForbidding = ForbidsRecording(rule);
        Effect const effect{rule.call_recording_type, rule.record_to, rule.recording_duration};
        auto const number = static_cast<std::uint32_t>(numbers.size() + 1);
        outcomes_.push_back(isForbidding ? 0 : numbers.emplace(effect, number).first->second);
        if (isForbidding && IsEnabled(place))
            forbidding_.push_back(place);
    }
}

bool AnalysedRules::Matches(std::size_t place, ExampleCall const& call) const {
    RuleSides const sides = SidesOf(rules_[place]);
    return Satisfies(call.caller, sides.caller, space_.Calls()) &&
           Satisfies(call.called, sides.called, space_.Calls());
}

/// For a search for a call that the rule at place decides.
Fate AnalysedRules::FateBefore(std::size_t place, RuleSpace::RuleIds const& must,
                               FoundCall const& found) {
    ExampleCall const call = Shown(found);
    auto const decider = decider_.PlaceFor(call);
    if (decider && *decider < place)
        return {Fate::kTaken, *decider};
    for (RuleSpace::RuleId const rule : must)
        if (!space_.IsReadable(rule) && !Matches(rule, call))
            return {Fate::kNotMatched, rule};
    return {decider == place ? Fate::kWanted : Fate::kUnclear};
}

CallAnswer AnalysedRules::FindShared(std::size_t place, std::size_t also) {
    CallSought sought;
    sought.must = {place};
    if (also != place) {
        sought.must.push_back(also);
        sought.importance = RuleSpace::kFurther;
    }
    sought.fateOf = [&](FoundCall const& call) { return FateBefore(place, sought.must, call); };
    sought.mayBeInTheWay = [&] { return MayMeet(place, 0, place); };
    return FindCall(space_, sought);
}

CallAnswer AnalysedRules::FindDecided(std::size_t place) {
    return FindShared(place, place);
}

CallAnswer const& AnalysedRules::Example(std::size_t place) {
    auto& example = examples_[place];
    if (!example) {
        example = FindDecided(place);
        space_.Reserve(example->takers.capacity() * sizeof(example->takers[0]) +
                       BytesOf(example->call.caller) + BytesOf(example->call.called));
    }
    return *example;
}

/// The enabled rules from begin up to end that may match a call that the rule with id matches, as
/// far as the first characters tell.
std::vector<std::uint32_t> AnalysedRules::Near(RuleSpace::RuleId id, std::size_t begin,
                                               std::size_t end) const {
    SidePair const& sides = space_.SidesIn(id);
    SideOutline const& called = space_.Pool().OutlineOf(sides.called);
    SideOutline const& caller = space_.Pool().OutlineOf(sides.caller);
    bool const byCalled = meeting_[0].Effort(called) <= meeting_[1].Effort(caller);
    return meeting_[byCalled ? 0 : 1].Find(byCalled ? called : caller,
                                           static_cast<std::uint32_t>(begin),
                                           static_cast<std::uint32_t>(end));
}

AnalysedRules::Places AnalysedRules::MayMeet(RuleSpace::RuleId id, std::size_t begin,
                                             std::size_t end) const {
    Places places;
    ForEachMeeting(id, begin, end, [&places](std::size_t place) {
        places.push_back(place);
        return true;
    });
    return places;
}

std::optional<AnalysedRules::Places> AnalysedRules::Matching(FoundCall const& call,
                                                             std::size_t end) {
    constexpr std::size_t kMost = 1000;
    Places matching = decider_.PlacesFor(Shown(call), end, kMost);
    if (matching.size() == kMost)
        return std::nullopt;
    auto const isUnreadable = [this](std::size_t rule) { return !space_.IsReadable(rule); };
    matching.erase(std::remove_if(matching.begin(), matching.end(), isUnreadable), matching.end());
    return matching;
}

AnalysedRules::Takers AnalysedRules::TakersOf(std::size_t place, std::size_t most) {
    Takers takers{{}, true};
    ForEachMeeting(place, 0, place, [&](std::size_t other) {
        if (takers.places.size() == most) {
            takers.isComplete = false;
            return false;
        }
        CallAnswer const taken = FindTaken(other, place);
        if (taken.outcome == Outcome::Found)
            takers.places.push_back(other);
        else if (taken.outcome == Outcome::Undecided)
            takers.isComplete = false;
        return true;
    });
    return takers;
}

CallAnswer AnalysedRules::FindTaken(std::size_t taker, std::size_t place) {
    CallAnswer taken{Outcome::None};
    if (Example(taker).outcome == Outcome::None)
        return taken;
    if (DoExamplesShow(taker, place, taken.call)) {
        taken.outcome = Outcome::Found;
        return taken;
    }
    return FindShared(taker, place);
}

/// Most often the examples of both show it, or a call put together of a side of each.
bool AnalysedRules::DoExamplesShow(std::size_t taker, std::size_t place, FoundCall& call) {
    CallAnswer const& taken = Example(taker);
    CallAnswer const& own = Example(place);
    if (taken.outcome != Outcome::Found || !space_.IsReadable(place))
        return false;
    SidePair const& sides = space_.SidesIn(place);
    bool const isCallerShown = space_.Pool().Accepts(sides.caller, taken.call.caller);
    bool const isCalledShown = space_.Pool().Accepts(sides.called, taken.call.called);
    call = taken.call;
    if (isCallerShown && isCalledShown)
        return true;
    if (own.outcome != Outcome::Found || (!isCallerShown && !isCalledShown))
        return false;
    (isCallerShown ? call.called : call.caller) = isCallerShown ? own.call.called : own.call.caller;
    return space_.Matches(taker, call) && decider_.PlaceFor(call) == taker;
}

} // namespace CallRecordingUtils
