// Asks the index, or walks the rules.

#include "records/counting/Decider.h"

namespace CallRecordingUtils {

Decider::Decider(RuleList rules) : rules_(std::move(rules)) {
    for (Rule& rule : rules_)
        pointers_.push_back(&rule);
    index_.Build(pointers_);
}

Decision Decider::Decide(Call const& call) const {
    Rule const* const rule = DecidingRecord(pointers_, index_, call);
    return rule == nullptr ? kNotRecorded : static_cast<Decision>(rule - rules_.data());
}

} // namespace CallRecordingUtils
