// Compares two lists of rules.

#include "administration/edit/Changes.h"

#include <algorithm>

#include "model/RuleSides.h"

namespace CallRecordingUtils {

namespace {

/// Whether the identifier is all that changed, as it is where other rules moved.
bool OnlyMadeRoom(Rule const& before, Rule const& after) {
    return before.callrecordingrule_id != after.callrecordingrule_id && AreAlike(before, after);
}

} // namespace

std::vector<Change> ChangesBetween(RuleList const& before, RuleList const& after) {
    RuleOrigins const origins = OriginsOf(before, after);
    std::vector<bool> const kept = KeptOrder(origins);
    std::vector<bool> isGone(before.size(), true);
    std::vector<Change> changes;
    for (std::size_t i = 0; i < after.size(); ++i) {
        Change change{nullptr, 0, &after[i], i + 1, true};
        if (origins[i]) {
            isGone[*origins[i]] = false;
            change.before = &before[*origins[i]];
            change.beforePosition = *origins[i] + 1;
            if (kept[i] && AreEqual(*change.before, after[i]))
                continue;
            change.isMeant = !kept[i] || !OnlyMadeRoom(*change.before, after[i]);
        }
        changes.push_back(change);
    }
    for (std::size_t i = 0; i < before.size(); ++i)
        if (isGone[i])
            changes.push_back({&before[i], i + 1, nullptr, 0, true});
    // If nothing but identifiers changed, the edit is about these.
    if (std::none_of(changes.begin(), changes.end(), [](Change const& c) { return c.isMeant; }))
        for (Change& change : changes)
            change.isMeant = true;
    return changes;
}

} // namespace CallRecordingUtils
