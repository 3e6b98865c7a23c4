// One of two lists that are compared: the rules of it that can decide a call.

#ifndef ANALYSIS_COMPAREDRULES_H
#define ANALYSIS_COMPAREDRULES_H

#include <cstddef>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "analysis/AnalysedRules.h"

namespace CallRecordingUtils {

/// The enabled rules, without those that have the sides of one before. The index that is their
/// number means no rule.
struct ComparedRules {
    /// list and space must outlive the object.
    ComparedRules(RuleParamsList const& list, RuleSpace& space);

    std::size_t Count() const { return ids.size(); }
    CallRecordingRuleParams const* Rule(std::size_t at) const {
        return at < Count() ? &rules[places[at]] : nullptr;
    }
    std::optional<std::size_t> Place(std::size_t at) const {
        return at < Count() ? std::optional(places[at]) : std::nullopt;
    }
    /// Of the rule at place, or of the next one that is among these.
    std::size_t IndexOf(std::size_t place) const;
    std::optional<std::size_t> IndexOf(SidePair const& sides) const;

    /// The rules before the one at at.
    RuleSpace::RuleIds Before(std::size_t at) const;
    /// The first of these that match call and have automata.
    RuleSpace::RuleIds Taking(FoundCall const& call, std::size_t at);
    /// The indices of the rules that may match a call that the rule with id matches, ascending.
    std::vector<std::size_t> MayMeet(RuleSpace::RuleId id) const;

    RuleParamsList const& rules;
    RuleSpace& space;
    CallDecider decider;
    std::vector<std::size_t> places{};
    RuleSpace::RuleIds ids{};
    std::map<std::pair<SideId, SideId>, std::size_t> indexOf{};
    MeetIndex index{}; // By called side.
};

} // namespace CallRecordingUtils

#endif
