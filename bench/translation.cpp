/// @file
/// Rewrites patterns as regular expressions and as globs.

#include "translation.h"

#include <algorithm>
#include <vector>

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace bench {
namespace {

using Texts = std::vector<std::string>;

Texts Split(std::string_view list) {
    Texts items;
    while (!list.empty()) {
        std::size_t const comma = std::min(list.find(','), list.size());
        items.emplace_back(list.substr(0, comma));
        list.remove_prefix(std::min(comma + 1, list.size()));
    }
    return items;
}

/// The character class of a set, without what is excluded.
std::string ClassText(std::string_view items) {
    bool isIn[256] = {};
    bool isOut[256] = {};
    for (std::string const& item : Split(items)) {
        bool const excludes = item.front() == '!';
        for (auto c = static_cast<unsigned char>(item[excludes ? 1 : 0]); c <= item.back(); ++c)
            (excludes ? isOut : isIn)[c] = true;
    }
    std::string text = "[";
    for (int c = 0; c < 256; ++c) {
        int end = c;
        while (end < 256 && isIn[end] && !isOut[end])
            ++end;
        if (end == c)
            continue;
        text += end - c == 1 ? fmt::format("{:c}", c) : fmt::format("{:c}-{:c}", c, end - 1);
        c = end;
    }
    return text + "]";
}

/// An expression for the numbers from low to high, which have one width.
std::string DigitsBetween(std::string const& low, std::string const& high) {
    std::size_t const rest = low.size() - 1;
    std::string const nines(rest, '9');
    std::string const zeros(rest, '0');
    char first = low.front();
    char last = high.front();
    if (rest == 0)
        return first == last ? low : fmt::format("[{}-{}]", first, last);
    if (first == last)
        return first + DigitsBetween(low.substr(1), high.substr(1));

    Texts parts;
    if (low.substr(1) != zeros)
        parts.push_back(first++ + DigitsBetween(low.substr(1), nines));
    std::string tail;
    if (high.substr(1) != nines)
        tail = last-- + DigitsBetween(zeros, high.substr(1));
    if (first <= last) {
        std::string const digits = rest == 1 ? "[0-9]" : fmt::format("[0-9]{{{}}}", rest);
        parts.push_back(DigitsBetween({first}, {last}) + digits);
    }
    if (!tail.empty())
        parts.push_back(tail);
    return fmt::format("(?:{})", fmt::join(parts, "|"));
}

/// Expressions for the numbers from low to high without the excluded ones.
Texts Pieces(std::string const& low, std::string const& high, Texts excluded) {
    int const width = static_cast<int>(low.size());
    Texts pieces;
    int first = std::stoi(low);
    auto const addUpTo = [&](int last) {
        if (first <= last)
            pieces.push_back(DigitsBetween(fmt::format("{:0{}}", first, width),
                                           fmt::format("{:0{}}", last, width)));
    };
    std::sort(excluded.begin(), excluded.end());
    for (std::string const& text : excluded) {
        if (text.size() != low.size() || text < low || high < text)
            continue;
        addUpTo(std::stoi(text) - 1);
        first = std::stoi(text) + 1;
    }
    addUpTo(std::stoi(high));
    return pieces;
}

std::string RangeText(std::string_view items, Exclusion exclusion) {
    Texts positive;
    Texts excluded;
    for (std::string const& item : Split(items))
        if (item.front() == '!')
            excluded.push_back(item.substr(1));
        else
            positive.push_back(item);
    Texts alternatives;
    for (std::string const& item : positive) {
        std::size_t const dash = item.find('-');
        Texts const pieces = Pieces(item.substr(0, dash), item.substr(dash + 1),
                                    exclusion == Exclusion::Split ? excluded : Texts());
        alternatives.insert(alternatives.end(), pieces.begin(), pieces.end());
    }
    std::string const lookahead = exclusion == Exclusion::Lookahead && !excluded.empty()
                                      ? fmt::format("(?!{})", fmt::join(excluded, "|"))
                                      : "";
    return fmt::format("{}(?:{})", lookahead, fmt::join(alternatives, "|"));
}

} // namespace

std::string SidePattern(std::string const& pattern, CallType type) {
    bool const lacksPort = type == CALL_TYPE_SIP && pattern.find(':') == std::string::npos;
    return lacksPort ? pattern + ":*" : pattern;
}

std::string ToRegex(std::string_view pattern, Exclusion exclusion, std::string const& anyOne) {
    std::string regex;
    while (!pattern.empty()) {
        char const c = pattern.front();
        std::size_t end = 0;
        if (c == '*') {
            regex += anyOne + "*";
        } else if (c == '?') {
            regex += anyOne;
        } else if (c == '[' || c == '<') {
            end = pattern.find(c == '[' ? ']' : '>');
            std::string_view const items = pattern.substr(1, end - 1);
            regex += c == '[' ? ClassText(items) : RangeText(items, exclusion);
        } else {
            if (std::string_view("^+().$").find(c) != std::string_view::npos)
                regex += '\\';
            regex += c;
        }
        pattern.remove_prefix(end + 1);
    }
    return regex;
}

std::string ToGlob(std::string_view pattern) {
    std::string glob;
    while (!pattern.empty()) {
        std::size_t const end = pattern.front() == '[' ? pattern.find(']') : 0;
        glob += end > 0 ? ClassText(pattern.substr(1, end - 1)) : std::string(pattern.substr(0, 1));
        pattern.remove_prefix(end + 1);
    }
    return glob;
}

} // namespace bench
