// Follows a rule by its place.

#include "administration/edit/RuleTrail.h"

#include <algorithm>
#include <utility>

#include "model/RuleSides.h"

namespace CallRecordingUtils {

RuleTrail::RuleTrail(RuleList last, std::int32_t id) : before_(std::move(last)), id_(id) {
    for (std::size_t i = 0; i < before_.size() && !place_; ++i)
        if (before_[i].callrecordingrule_id == id)
            place_ = i;
}

bool RuleTrail::IsIt(Rule const& gone) const {
    return lost_ ? AreAlike(gone, *lost_) : gone.callrecordingrule_id == id_;
}

/// Looks for the rule among those that are gone afterwards.
std::optional<Change> RuleTrail::Meet(RuleOrigins const& origins) {
    std::vector<bool> isGone(before_.size(), true);
    for (auto const& origin : origins)
        if (origin)
            isGone[*origin] = false;
    for (std::size_t i = 0; i < before_.size(); ++i)
        if (isGone[i] && IsIt(before_[i])) {
            place_ = i;
            lost_.reset();
            return Change{&before_[i], i + 1, nullptr, 0, true};
        }
    return std::nullopt;
}

std::optional<Change> RuleTrail::StepBack(RuleList before) {
    after_ = std::exchange(before_, std::move(before));
    RuleOrigins const origins = OriginsOf(before_, after_);
    if (!place_)
        return Meet(origins);
    std::size_t const place = *place_;
    place_ = origins[place];
    Change change{nullptr, 0, &after_[place], place + 1, true};
    if (!place_) {
        lost_ = after_[place];
        return change;
    }
    change.before = &before_[*place_];
    change.beforePosition = *place_ + 1;
    bool const isEqual = AreEqual(*change.before, *change.after);
    return isEqual && KeptOrder(origins)[place] ? std::nullopt : std::optional(change);
}

} // namespace CallRecordingUtils
