// The search of the pattern matcher, as long as there is only one way through the pattern.

#include "matching/PatternMatcher.h"

#include <algorithm>

#include "matching/PatternCounts.h"

namespace CallRecordingUtils {

/// Takes the most common elements from at on without reading each as an element: literals, "?", and
/// sets of symbol items. Moves at and way behind them.
bool PatternMatcher::TakeSteps(std::size_t& at, Way& way) const {
    std::string_view const pattern = texts_.pattern;
    std::string_view const address = texts_.address;
    std::size_t next = at;
    std::size_t position = way.position;
    std::uint32_t sets = 0;
    while (next < pattern.size()) {
        if (IsLiteral(pattern[next])) {
            std::size_t const shared =
                SharedLiterals(pattern.substr(next), address.substr(position));
            next += shared;
            position += shared;
            if (next < pattern.size() && IsLiteral(pattern[next]))
                return false;
        } else if (pattern[next] == '?') {
            if (position == address.size())
                return false;
            ++next;
            ++position;
        } else if (pattern[next] == '[' && position < address.size()) {
            SymbolAnswer const items = AskSymbolItems(pattern, next + 1, address[position]);
            if (items.end >= pattern.size() || pattern[items.end] != ']')
                break;
            if (!items.admit)
                return false;
            next = items.end + 1;
            ++position;
            ++sets;
        } else {
            break;
        }
    }
    at = next;
    way.position = position;
    if (sets > 0)
        way.grouped.symbols += sets;
    return true;
}

/// Takes the elements from begin to end, all of fixed width.
bool PatternMatcher::TakeFixed(std::size_t begin, std::size_t end, Way& way) const {
    for (std::size_t at = begin;;) {
        if (!TakeSteps(at, way))
            return false;
        if (at >= end)
            return true;
        Element const element = ReadElement(texts_.pattern, at);
        if (!texts_.Take(element, way.position + texts_.WidthOf(element), way))
            return false;
        at = element.end;
    }
}

bool PatternMatcher::Search(PositionSearch::Asked asked) {
    for (;;) {
        if (!TakeSteps(at_, way_))
            return false;
        Element const element = ReadElement(texts_.pattern, at_);
        if (element.construct == Construct::End)
            return texts_.CanEndAt(way_.position);
        if (element.construct == Construct::Stop)
            return true;
        if (element.construct == Construct::Unclosed)
            return false;
        std::size_t const width = texts_.WidthOf(element);
        if (width > 0) {
            if (!texts_.Take(element, way_.position + width, way_))
                return false;
            at_ = element.end;
            continue;
        }
        FixedRun const rest = texts_.ReadFixed(element.end);
        if (rest.next == Construct::Range)
            return SearchPositions(asked);
        if (!TakeOpen(element, rest))
            return false;
    }
}

/// Takes open, a "*" or a range expression without a fixed width. When the place where it ends has
/// to be searched for, takes rest too, the elements of fixed width that follow.
bool PatternMatcher::TakeOpen(Element const& open, FixedRun const& rest) {
    std::size_t const left = texts_.address.size() - way_.position;
    if (rest.next == Construct::Unclosed || rest.width > left)
        return false;
    if (rest.next != Construct::End || texts_.ending != Ending::AtEnd)
        return SearchOpen(open, rest, left - rest.width);
    // All that follows has a fixed width, so it can end at one position only.
    at_ = open.end;
    return texts_.Take(open, texts_.address.size() - rest.width, way_);
}

/// Finds the shortest run, of at most longest characters, that open takes and after which rest
/// fits. After rest comes a "*", or something else that takes anything. If that matches after a
/// longer run, it matches after this one too, since it can take the characters in between. So no
/// other run ever has to be tried.
bool PatternMatcher::SearchOpen(Element const& open, FixedRun const& rest, std::size_t longest) {
    std::size_t shortest = 0;
    if (open.construct == Construct::Range) {
        Lengths const lengths = CandidateLengths(ItemsOf(texts_.pattern, open));
        shortest = lengths.shortest;
        longest = std::min(longest, lengths.longest);
    }
    // Most wrong ends show at the literal that has to follow.
    char const next = rest.width > 0 ? texts_.pattern[open.end] : '?';
    for (std::size_t length = shortest; length <= longest; ++length) {
        if (IsLiteral(next) && texts_.address[way_.position + length] != next)
            continue;
        Way way = way_;
        if (texts_.Take(open, way.position + length, way) && TakeFixed(open.end, rest.end, way) &&
            (rest.next != Construct::End || texts_.CanEndAt(way.position))) {
            way_ = way;
            at_ = rest.end;
            return true;
        }
    }
    return false;
}

bool PatternMatcher::SearchPositions(PositionSearch::Asked asked) {
    PositionSearch search(texts_, asked);
    if (!search.Matches(at_, way_))
        return false;
    at_ = search.End();
    return true;
}

bool PatternMatcher::MatchesWithCounts(wild_card_counts& counts) {
    if (!Search(PositionSearch::Asked::AnswerAndWay))
        return false;
    // Outside groups a match consumes each element once, whichever way it takes.
    CountConstructs(texts_.pattern.substr(0, at_), counts);
    counts.grouped_symbol_count += static_cast<std::int32_t>(way_.grouped.symbols);
    counts.grouped_question_count += static_cast<std::int32_t>(way_.grouped.questions);
    return true;
}

} // namespace CallRecordingUtils
