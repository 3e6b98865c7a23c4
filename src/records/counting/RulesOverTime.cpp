// Finds the era of a call, and loads its rules when they are asked for.

#include "records/counting/RulesOverTime.h"

#include <algorithm>

namespace CallRecordingUtils {

RulesOverTime::RulesOverTime(RuleList const& rules) : eras_(1) {
    std::call_once(
        eras_.front().isLoaded, [&] { eras_.front().rules.emplace(rules); });
}

RulesOverTime::RulesOverTime(std::vector<Moment> begins, Load load)
    : begins_(std::move(begins)), load_(std::move(load)), eras_(begins_.size()) {}

std::optional<std::size_t> RulesOverTime::EraOf(std::optional<CallTime> time,
                                                std::optional<Instant> instant) const {
    if (begins_.empty() && !eras_.empty())
        return 0;
    if (!time)
        return std::nullopt;
    auto const next =
        std::partition_point(begins_.begin(), begins_.end(), [&](Moment const& begin) {
            return instant ? begin.instant <= *instant : begin.shown <= *time;
        });
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
