// Finds the era of a call, and loads its rules when they are asked for.

#include "records/counting/RulesOverTime.h"

#include <algorithm>

namespace CallRecordingUtils {

RulesOverTime::RulesOverTime(RuleList const& rules) : eras_(1) {
    std::call_once(
        eras_.front().isLoaded, [&] { eras_.front().rules.emplace(rules); });
}

/// Where a clock was set back, an era begins after the one behind it, and ends before it begins: it
/// gets the beginning of the one behind it.
RulesOverTime::RulesOverTime(std::vector<CallTime> begins, Load load)
    : begins_(std::move(begins)), load_(std::move(load)), eras_(begins_.size()) {
    for (std::size_t i = begins_.size(); i > 1; --i)
        begins_[i - 2] = std::min(begins_[i - 2], begins_[i - 1]);
}

std::optional<std::size_t> RulesOverTime::EraOf(std::optional<CallTime> time) const {
    if (begins_.empty() && !eras_.empty())
        return 0;
    if (!time)
        return std::nullopt;
    auto const next = std::upper_bound(begins_.begin(), begins_.end(), *time);
    if (next == begins_.begin())
        return std::nullopt;
    return static_cast<std::size_t>(next - begins_.begin()) - 1;
}

RuleSet const* RulesOverTime::In(std::size_t era) const {
    Era& asked = eras_[era];
    std::call_once(asked.isLoaded, [&] {
        std::lock_guard<std::mutex> const lock(loading_);
        if (std::optional<RuleList> rules = load_(era))
            asked.rules.emplace(std::move(*rules));
    });
    return asked.rules ? &*asked.rules : nullptr;
}

} // namespace CallRecordingUtils
