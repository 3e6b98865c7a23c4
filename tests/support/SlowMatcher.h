/// @file
/// A deliberately naive matcher, which the library's is compared with: plain recursion over copies
/// of the remaining texts, shortest runs first. It remembers only what failed before, or it would
/// take forever. It asks the library what a group admits; item lists have tests of their own.

#ifndef TESTS_SUPPORT_SLOWMATCHER_H
#define TESTS_SUPPORT_SLOWMATCHER_H

#include <algorithm>
#include <array>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include <callrecordingutils/CCallRecordingAssistant.h>

namespace SlowMatcher {

using CallRecordingUtils::CCallRecordingAssistant;
using CallRecordingUtils::wild_card_counts;

using Counts = std::array<int, 7>;
using Answer = std::optional<Counts>; // What a match consumed; nothing without a match.

/// Returns the library's counters in this order: symbols, symbols in groups, "?", "?" in groups,
/// sets, range expressions, "*".
inline Counts CountsOf(wild_card_counts const& n) {
    return {
        n.symbol_count,     n.grouped_symbol_count,   n.question_count, n.grouped_question_count,
        n.symbol_set_count, n.range_expression_count, n.star_count};
}

/// Returns what the library's matcher says.
inline Answer LibraryMatch(CCallRecordingAssistant const& library, std::string const& address,
                           std::string const& pattern) {
    wild_card_counts n;
    return library.IsMatching(address, pattern, n) ? Answer(CountsOf(n)) : std::nullopt;
}

/// Returns whether the construct takes run, and adds to counts what it consumes.
inline bool Takes(CCallRecordingAssistant const& library, char construct, std::string const& list,
                  std::string const& run, Counts& counts) {
    std::size_t const kind = std::string("..?.[<*").find(construct); // In the order of Counts.
    ++counts[kind < counts.size() ? kind : 0];
    if (construct == '*' || construct == '?')
        return true;
    if (construct != '<' && construct != '[')
        return run[0] == construct;
    wild_card_counts consumed;
    if (!library.IsInRange(list, run, consumed, true) || !library.Exclude(list, run))
        return false;
    counts[1] += consumed.grouped_symbol_count;
    counts[3] += consumed.grouped_question_count;
    return true;
}

/// The lengths of the rests of address and pattern that did not match each other.
using Failures = std::set<std::pair<std::size_t, std::size_t>>;

inline Answer Match(CCallRecordingAssistant const& library, std::string const& address,
                    std::string const& pattern, Failures&& failed = {}) {
    if (failed.count({address.size(), pattern.size()}) != 0)
        return std::nullopt;
    if (pattern.empty())
        return address.empty() ? Answer(Counts{}) : std::nullopt;
    char const c = pattern[0];
    bool const isGroup = c == '[' || c == '<';
    if (!isGroup && c != '*' && c != '?' && !library.IsAvailableSymbol(c))
        return Counts{}; // It ends the match with success.
    std::size_t const end = isGroup ? pattern.find(c == '[' ? ']' : '>') : 0;
    if (end == std::string::npos)
        return std::nullopt;
    std::size_t const longest = c == '*' || c == '<' ? address.size() : 1;
    for (std::size_t n = c == '*' ? 0 : 1; n <= std::min(longest, address.size()); ++n) {
        Answer answer =
            Match(library, address.substr(n), pattern.substr(end + 1), std::move(failed));
        std::string const list = isGroup ? pattern.substr(1, end - 1) : "";
        if (answer && Takes(library, c, list, address.substr(0, n), *answer))
            return answer;
    }
    if (address.size() + pattern.size() > 16) // Shorter ones are matched faster than looked up.
        failed.emplace(address.size(), pattern.size());
    return std::nullopt;
}

} // namespace SlowMatcher

#endif
