// Matches two lists of rules.

#include "administration/edit/Origins.h"

#include <algorithm>
#include <map>
#include <string>

#include <fmt/format.h>

namespace CallRecordingUtils {

std::string AllFields(Rule const& rule) {
    // The text of a field has no line break.
    return fmt::format("{}\n{}\n{}\n{}\n{}\n{}\n{}\n{}\n{}\n{}", rule.callrecordingrule_id,
                       rule.caller_pattern, static_cast<int>(rule.caller_call_type),
                       rule.called_pattern, static_cast<int>(rule.called_call_type),
                       static_cast<int>(rule.call_recording_type), rule.record_to,
                       rule.recording_duration, rule.description, rule.recording_rule_state);
}

namespace {

std::string AllButId(Rule const& rule) {
    std::string const all = AllFields(rule);
    return all.substr(all.find('\n'));
}

std::string IdText(Rule const& rule) {
    return std::to_string(rule.callrecordingrule_id);
}

/// Pairs the rules of after that have no origin yet with rules of before that are not taken and
/// have the same key.
template <typename Key>
void Match(RuleList const& before, RuleList const& after, Key key, std::vector<bool>& isTaken,
           RuleOrigins& origins) {
    std::multimap<std::string, std::size_t> free; // In order among equal keys.
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

RuleOrigins OriginsOf(RuleList const& before, RuleList const& after) {
    RuleOrigins origins(after.size());
    std::vector<bool> isTaken(before.size(), false);
    Match(before, after, AllFields, isTaken, origins);
    Match(before, after, AllButId, isTaken, origins);
    Match(before, after, IdText, isTaken, origins);
    return origins;
}

// Finds a longest increasing subsequence of the origins. ends[n] is the place of the least origin
// that ends one of n + 1 rules, and previous leads back from there.
std::vector<bool> KeptOrder(RuleOrigins const& origins) {
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
