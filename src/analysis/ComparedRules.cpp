// Reads a list into the space of a comparison, and finds its rules there.

#include "analysis/ComparedRules.h"

#include <algorithm>

namespace CallRecordingUtils {

ComparedRules::ComparedRules(RuleParamsList const& list, RuleSpace& in)
    : rules(list), space(in), decider(list, in.Calls()) {
    for (std::size_t place = 0; place < rules.size(); ++place) {
        if (rules[place].recording_rule_state != RULE_ENABLED)
            continue;
        RuleSpace::RuleId const id = space.Add(SidesOf(rules[place]));
        SidePair const& sides = space.SidesIn(id);
        if (!indexOf.insert({{sides.caller, sides.called}, ids.size()}).second)
            continue;
        places.push_back(place);
        ids.push_back(id);
        index.Add(static_cast<std::uint32_t>(ids.size() - 1), space.Pool().OutlineOf(sides.called));
    }
    space.Reserve(rules.size() * CallDecider::kBytesForRule + index.Bytes());
}

std::size_t ComparedRules::IndexOf(std::size_t place) const {
    auto const at = std::lower_bound(places.begin(), places.end(), place);
    return static_cast<std::size_t>(at - places.begin());
}

std::optional<std::size_t> ComparedRules::IndexOf(SidePair const& sides) const {
    auto const found = indexOf.find({sides.caller, sides.called});
    return found != indexOf.end() ? std::optional(found->second) : std::nullopt;
}

RuleSpace::RuleIds ComparedRules::Before(std::size_t at) const {
    return {ids.begin(), ids.begin() + static_cast<std::ptrdiff_t>(at)};
}

RuleSpace::RuleIds ComparedRules::Taking(FoundCall const& call, std::size_t at) {
    constexpr std::size_t kMost = 32;
    RuleSpace::RuleIds taking;
    std::size_t const end = at < Count() ? places[at] : rules.size();
    for (std::size_t const place : decider.PlacesFor(ExampleOf(call, space.Calls()), end, kMost)) {
        std::size_t const i = IndexOf(place); // Maybe of an earlier rule with the same sides.
        if (i < Count() && places[i] == place && space.IsReadable(ids[i]))
            taking.push_back(ids[i]);
    }
    return taking;
}

std::vector<std::size_t> ComparedRules::MayMeet(RuleSpace::RuleId id) const {
    SideOutline const& called = space.Pool().OutlineOf(space.SidesIn(id).called);
    std::vector<std::size_t> meeting;
    for (std::size_t const at : index.Find(called, 0, static_cast<std::uint32_t>(Count())))
        if (space.MayMeet(id, ids[at]))
            meeting.push_back(at);
    return meeting;
}

} // namespace CallRecordingUtils
