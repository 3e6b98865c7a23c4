// Asks the index, or walks the rules.

#include "replay/Decider.h"

namespace callrecordingctl {

Decider::Decider(RuleList rules) : rules_(std::move(rules)) {
    for (Rule& rule : rules_)
        pointers_.push_back(&rule);
    index_.Build(pointers_);
}

Decision Decider::Decide(CallRecordingUtils::Call const& call) const {
    Rule const* const rule = CallRecordingUtils::DecidingRecord(pointers_, index_, call);
    return rule == nullptr ? kNotRecorded : static_cast<Decision>(rule - rules_.data());
}

} // namespace callrecordingctl
