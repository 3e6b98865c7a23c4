// Matches two lists of rules.

#include "administration/edit/Origins.h"

#include <algorithm>
#include <map>
#include <string>

#include <fmt/format.h>

namespace CallRecordingUtils {

std::string AllOf(Rule const& rule) {
    // No text of a rule has a line break in it.
    return fmt::format("{}\n{}\n{}\n{}\n{}\n{}\n{}\n{}\n{}\n{}", rule.callrecordingrule_id,
                       rule.caller_pattern, static_cast<int>(rule.caller_call_type),
                       rule.called_pattern, static_cast<int>(rule.called_call_type),
                       static_cast<int>(rule.call_recording_type), rule.record_to,
                       rule.recording_duration, rule.description, rule.recording_rule_state);
}
namespace {

std::string AllButIdOf(Rule const& rule) {
    std::string const all = AllOf(rule);
    return all.substr(all.find('\n'));
}

std::string IdOf(Rule const& rule) {
    return std::to_string(rule.callrecordingrule_id);
}

/// Gives the rules of after that have none yet the free ones of before with the same key.
template <typename Key>
void Match(RuleList const& before, RuleList const& after, Key key, std::vector<bool>& isTaken,
           Origins& origins) {
    std::multimap<std::string, std::size_t> free; // Keeps the order of those with the same key.
    for (std::size_t i = 0; i < before.size(); ++i)
        if (!isTaken[i])
            free.emplace(key(before[i]), i);
    for (std::size_t i = 0; i < after.size(); ++i) {
        if (origins[i])
            continue;
        auto const found = free.lower_bound(key(after[i]));
        if (found == free.end() || found->first != key(after[i]))
            continue;
        origins[i] = found->second;
        isTaken[found->second] = true;
        free.erase(found);
    }
}

} // namespace

Origins OriginsOf(RuleList const& before, RuleList const& after) {
    Origins origins(after.size());
    std::vector<bool> isTaken(before.size(), false);
    Match(before, after, AllOf, isTaken, origins);
    Match(before, after, AllButIdOf, isTaken, origins);
    Match(before, after, IdOf, isTaken, origins);
    return origins;
}

// The longest increasing run of origins. ends[n] is the place of the least origin with which a run
// of n + 1 ends, and previous leads back from it.
std::vector<bool> KeptOrder(Origins const& origins) {
    std::vector<std::size_t> ends;
    std::vector<std::optional<std::size_t>> previous(origins.size());
    for (std::size_t i = 0; i < origins.size(); ++i) {
        if (!origins[i])
            continue;
        auto const end =
            std::lower_bound(ends.begin(), ends.end(), i, [&](std::size_t a, std::size_t b) {
                return *origins[a] < *origins[b];
            });
        if (end != ends.begin())
            previous[i] = *(end - 1);
        if (end == ends.end())
            ends.push_back(i);
        else
            *end = i;
    }
    std::vector<bool> kept(origins.size(), false);
    if (!ends.empty())
        for (std::optional<std::size_t> at = ends.back(); at; at = previous[*at])
            kept[*at] = true;
    return kept;
}

} // namespace CallRecordingUtils
