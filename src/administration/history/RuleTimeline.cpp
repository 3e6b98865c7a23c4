// Puts the edits of the history in a row.

#include "administration/history/RuleTimeline.h"

#include <algorithm>

#include "administration/inspection/Digest.h"

namespace CallRecordingUtils {

std::vector<RuleEra> ErasOf(std::vector<HistoryEntry> const& entries,
                            std::string const& digestNow) {
    std::vector<RuleEra> eras(1);
    eras.front().digest = entries.empty() ? digestNow : entries.front().before;
    std::int64_t earliest = RuleEra::kAlways; // From when on the next change may have happened.
    for (HistoryEntry const& entry : entries) {
        if (entry.state != EditState::Unknown) { // The change that follows it tells what is known.
            eras.back().to = entry.seconds;
            eras.push_back({entry.after, entry.seconds, RuleEra::kNow,
                            entry.IsOutside() ? earliest : entry.seconds, entry});
        }
        earliest = entry.seconds;
    }
    return eras;
}

RuleTimeline::RuleTimeline(std::string const& path)
    : history_(path), now_(history_.Read()), eras_(ErasOf(now_.entries, DigestOf(now_.text))) {}

RuleEra const& RuleTimeline::At(std::int64_t seconds) const {
    auto const found = std::find_if(eras_.rbegin(), eras_.rend(),
                                    [seconds](RuleEra const& era) { return era.from <= seconds; });
    return *found; // The first one was always there.
}

std::optional<std::string> RuleTimeline::TextOf(RuleEra const& era) {
    return era.digest == DigestNow() ? std::optional(now_.text) : history_.TextOf(era.digest);
}

} // namespace CallRecordingUtils
