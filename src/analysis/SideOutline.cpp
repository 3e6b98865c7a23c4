// Takes the traits of a side from the decision index.

#include "analysis/SideOutline.h"

namespace CallRecordingUtils {

/// A rule side of type number sees the user of a party, with or without a host, as one of type any
/// sees the user of a typed address.
SideOutline::SideOutline(RuleSide side, CallKind calls) {
    words_.fill(~Word{0});
    if (calls == CallKind::Parties && side.type == CALL_TYPE_NUMBER)
        side.type = CALL_TYPE_ANY;
    std::size_t steps = 0;
    RuleTraits const traits = TraitsOf(RuleSides{{"*", CALL_TYPE_ANY}, side}, steps);
    if (calls == CallKind::Typed)
        Set(0, traits[FirstTrait(1, View::CallType)]);
    for (std::size_t lane = kFrontLane; lane < kBackLane; ++lane)
        Set(lane, traits[FirstTrait(1, View::Front) + lane - kFrontLane]);
    for (std::size_t lane = kBackLane; lane < kLanes; ++lane)
        Set(lane, traits[FirstTrait(1, View::Back) + lane - kBackLane]);
}

} // namespace CallRecordingUtils
