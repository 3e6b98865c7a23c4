/// @file
/// A deliberately naive matcher, which the real one is compared with: plain recursion over copies
/// of the remaining texts, shortest runs first. Its time is exponential in the number of "*" and
/// range expressions of the pattern.

#ifndef TESTS_SUPPORT_SLOWMATCHER_H
#define TESTS_SUPPORT_SLOWMATCHER_H

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <sstream>
#include <string>

#include <callrecordingutils/CCallRecordingAssistant.h>

namespace SlowMatcher {

enum { SYMBOL, GROUPED_SYMBOL, QUESTION, GROUPED_QUESTION, SET, RANGE, STAR, COUNTERS };
using Counts = std::array<int, COUNTERS>;
using Answer = std::optional<Counts>; // What a match consumed, or nothing.

inline int IsLiteral(int c) {
    return c != 0 && (std::isalnum(c) || std::strchr("#^/_=+%~@;().:$&'", c) != nullptr);
}

inline long Value(std::string const& digits) {
    return std::min<long>(std::strtol(digits.c_str(), nullptr, 10), INT32_MAX);
}

inline bool IsBetween(std::string const& run, std::string const& low, std::string const& high) {
    if (std::isalpha(high[0])) {
        return run.size() == 1 && std::isalpha(static_cast<unsigned char>(run[0])) &&
               !low.empty() && low[0] < run[0] && run <= high;
    }
    if (run.size() < low.size() || run.size() > high.size())
        return false;
    if (low.size() > 1 && low[0] == '0')
        return run.size() == low.size() && low <= run && run <= high;
    return std::isdigit(static_cast<unsigned char>(run[0])) && (run[0] != '0' || run == "0") &&
           Value(low) <= Value(run) && Value(run) <= Value(high);
}

/// Whether a positive item of list accepts run; what was consumed on the way is added to counts.
inline bool Accepts(std::string const& list, std::string const& run, Counts& counts) {
    Counts const before = counts;
    std::istringstream items(list);
    for (std::string item; std::getline(items, item, ',');) {
        std::string rest = run, low, high;
        std::size_t at = 0;
        auto const is = [&](int (*belongs)(int)) {
            return at < item.size() && belongs(static_cast<unsigned char>(item[at])) != 0;
        };
        auto const take = [&](int (*belongs)(int), std::string& to) {
            for (; is(belongs); ++at) {
                to += item[at];
            }
        };
        while (at < item.size() && item[at] != '!') {
            char const c = item[at];
            if (c == '-') {
                ++at;
                bool const isRange = is(std::isalnum);
                std::string letter = is(std::isalpha) ? item.substr(at++, 1) : "";
                if (letter.empty())
                    take(std::isdigit, high);
                if (isRange && IsBetween(run, low, letter.empty() ? high : letter)) {
                    counts[GROUPED_SYMBOL] += static_cast<int>(rest.size());
                    return true;
                }
            } else if (c == '?') {
                ++at;
                low.clear();
                rest.erase(0, 1);
                ++counts[GROUPED_QUESTION];
            } else if (is(IsLiteral)) {
                take(IsLiteral, low);
                if (rest.compare(0, low.size(), low) == 0) {
                    rest.erase(0, low.size());
                    counts[GROUPED_SYMBOL] += static_cast<int>(low.size());
                } else {
                    at = std::min(item.find_first_not_of('?', at), item.size());
                }
            } else { // Not of the language.
                counts = before;
                break;
            }
            if (rest.empty()) {
                if (at == item.size() || (item[at] == '-' && c != '?'))
                    return true;
                counts = before;
                break;
            }
        }
    }
    counts = before;
    return false;
}

inline bool Excludes(std::string const& list, std::string const& run) {
    std::size_t const mark = list.find('!');
    if (mark == std::string::npos)
        return false;
    std::size_t const comma = list.find(',', mark);
    Counts ignored{};
    return Accepts(list.substr(mark + 1, comma - mark - 1), run, ignored) ||
           Excludes(list.substr(comma == std::string::npos ? mark + 1 : comma), run);
}

inline bool Takes(char construct, std::string const& list, std::string const& run, Counts& counts) {
    switch (construct) {
    case '*': ++counts[STAR]; return true;
    case '?': ++counts[QUESTION]; return true;
    case '[': ++counts[SET]; return Accepts(list, run, counts) && !Excludes(list, run);
    case '<': ++counts[RANGE]; return Accepts(list, run, counts) && !Excludes(list, run);
    default: ++counts[SYMBOL]; return run[0] == construct;
    }
}

inline Answer Match(std::string const& address, std::string const& pattern) {
    if (pattern.empty())
        return address.empty() ? Answer(Counts{}) : std::nullopt;
    char const c = pattern[0];
    bool const isGroup = c == '[' || c == '<';
    if (!isGroup && c != '*' && c != '?' && !IsLiteral(static_cast<unsigned char>(c)))
        return Counts{}; // It ends the match with success.
    std::size_t const end = isGroup ? pattern.find(c == '[' ? ']' : '>') : 0;
    if (end == std::string::npos)
        return std::nullopt;
    std::size_t const longest = c == '*' || c == '<' ? address.size() : 1;
    for (std::size_t n = c == '*' ? 0 : 1; n <= std::min(longest, address.size()); ++n) {
        Answer answer = Match(address.substr(n), pattern.substr(end + 1));
        if (answer && Takes(c, pattern.substr(1, end - 1), address.substr(0, n), *answer))
            return answer;
    }
    return std::nullopt;
}

/// The library's counters in the same form.
inline Counts CountsOf(CallRecordingUtils::wild_card_counts const& n) {
    return {
        n.symbol_count,     n.grouped_symbol_count,   n.question_count, n.grouped_question_count,
        n.symbol_set_count, n.range_expression_count, n.star_count};
}

/// What the library's matcher says, in the same form.
inline Answer LibraryMatch(CallRecordingUtils::CCallRecordingAssistant const& assistant,
                           std::string const& address, std::string const& pattern) {
    CallRecordingUtils::wild_card_counts n;
    bool const isMatching = assistant.IsMatching(address, pattern, n);
    return isMatching ? Answer(CountsOf(n)) : std::nullopt;
}

} // namespace SlowMatcher

#endif
