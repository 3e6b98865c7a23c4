// The search of the pattern matcher.

#include "matching/PatternMatcher.h"

#include <algorithm>
#include <array>

#include "matching/PatternCounts.h"

namespace CallRecordingUtils {

PatternMatcher::StepRun PatternMatcher::ReadSteps(std::size_t at) const {
    StepRun run{at, 0, Construct::End};
    for (;;) {
        for (; run.end < pattern_.size() && IsLiteral(pattern_[run.end]); ++run.end)
            ++run.width;
        Element const element = ReadElement(pattern_, run.end);
        run.next = element.construct;
        if (!IsStep(run.next))
            return run;
        run.end = element.end;
        ++run.width;
    }
}

bool PatternMatcher::CanEndAt(std::size_t position) const {
    bool const isAtEnd = position == address_.size();
    return ending_ == Ending::AtEnd ? isAtEnd : !isAtEnd && address_[position] == ':';
}

bool PatternMatcher::TakeStep(Element const& step, Way& way) const {
    if (way.position == address_.size())
        return false;
    if (step.construct == Construct::Set) {
        Consumed consumed;
        std::string_view const candidate = address_.substr(way.position, 1);
        if (!AdmitsCandidate(ItemsOf(pattern_, step), candidate, consumed))
            return false;
        way.grouped += consumed;
    } else if (step.construct == Construct::Literal &&
               pattern_[step.begin] != address_[way.position]) {
        return false;
    }
    ++way.position;
    return true;
}

/// Takes the literals from at on; at ends behind them. The commonest steps, without the detour of
/// an element for each.
bool PatternMatcher::TakeLiterals(std::size_t& at, Way& way) const {
    for (; at < pattern_.size() && IsLiteral(pattern_[at]); ++at, ++way.position)
        if (way.position == address_.size() || pattern_[at] != address_[way.position])
            return false;
    return true;
}

/// Takes the steps from begin to end; nothing else stands between.
bool PatternMatcher::TakeSteps(std::size_t begin, std::size_t end, Way& way) const {
    for (std::size_t at = begin;;) {
        if (!TakeLiterals(at, way))
            return false;
        if (at >= end)
            return true;
        Element const step = ReadElement(pattern_, at);
        if (!TakeStep(step, way))
            return false;
        at = step.end;
    }
}

/// Takes the characters up to end as the run of "*" or of a range expression. The recursion tests
/// the rest of the pattern before the candidate of a range; both must hold, so the order changes
/// nothing.
bool PatternMatcher::TakeRunTo(Element const& run, std::size_t end, Way& way) const {
    if (run.construct == Construct::Range) {
        Consumed consumed;
        std::string_view const candidate = address_.substr(way.position, end - way.position);
        if (!AdmitsCandidate(ItemsOf(pattern_, run), candidate, consumed))
            return false;
        way.grouped += consumed;
    }
    way.position = end;
    return true;
}

bool PatternMatcher::Matches() {
    for (;;) {
        if (!TakeLiterals(at_, way_))
            return false;
        Element const element = ReadElement(pattern_, at_);
        switch (element.construct) {
        case Construct::End: return CanEndAt(way_.position);
        case Construct::Stop: return true;
        case Construct::Unclosed: return false;
        case Construct::Literal:
        case Construct::AnyOne:
        case Construct::Set:
            if (!TakeStep(element, way_))
                return false;
            at_ = element.end;
            break;
        case Construct::AnyRun:
        case Construct::Range: {
            StepRun const rest = ReadSteps(element.end);
            if (rest.next == Construct::Range)
                return FollowManyWays();
            if (!TakeRun(element, rest))
                return false;
        }
        }
    }
}

/// Takes a "*" or range expression, and the steps of rest behind it when the run has to be
/// searched.
bool PatternMatcher::TakeRun(Element const& run, StepRun const& rest) {
    std::size_t const left = address_.size() - way_.position;
    if (rest.next == Construct::Unclosed || rest.width > left)
        return false;
    if (rest.next != Construct::End || ending_ != Ending::AtEnd)
        return SearchRun(run, rest, left - rest.width);
    // What follows has one length, so the run can only end at one position.
    at_ = run.end;
    return TakeRunTo(run, address_.size() - rest.width, way_);
}

/// Finds the shortest run, of at most longest characters, behind which the steps of rest fit. What
/// comes after them is a "*" or takes anything. If that matches after a longer run, it matches
/// after this one as well, since it can take the characters between; so no other run need ever be
/// tried.
bool PatternMatcher::SearchRun(Element const& run, StepRun const& rest, std::size_t longest) {
    bool const isRange = run.construct == Construct::Range;
    if (isRange)
        longest = std::min(longest, LongestCandidate(ItemsOf(pattern_, run)));
    for (std::size_t length = isRange ? 1 : 0; length <= longest; ++length) {
        Way way = way_;
        if (TakeRunTo(run, way.position + length, way) && TakeSteps(run.end, rest.end, way) &&
            (rest.next != Construct::End || CanEndAt(way.position))) {
            way_ = way;
            at_ = rest.end;
            return true;
        }
    }
    return false;
}

/// Goes on from way_ when a range expression can end in several positions. For addresses of usual
/// lengths the ways fit into the arena, and nothing is allocated.
bool PatternMatcher::FollowManyWays() {
    std::array<std::byte, 4608> memory;
    std::pmr::monotonic_buffer_resource arena(memory.data(), memory.size());
    Ways ways(&arena);
    Ways next(&arena);
    Marks taken(address_.size() + 1, false, &arena);
    ways.reserve(address_.size() + 1);
    next.reserve(address_.size() + 1);
    ways.push_back(way_);
    while (!ways.empty()) {
        Element const element = ReadElement(pattern_, at_);
        switch (element.construct) {
        case Construct::End: return PickWayAtEnd(ways);
        case Construct::Stop: way_ = ways.front(); return true;
        case Construct::Unclosed: return false;
        case Construct::Literal:
        case Construct::AnyOne:
        case Construct::Set: KeepWhatSteps(element, ways); break;
        case Construct::AnyRun:
            SpreadAnyRun(ways, next);
            ways.swap(next);
            break;
        case Construct::Range:
            SpreadRange(element, ways, next, taken);
            ways.swap(next);
            break;
        }
        at_ = element.end;
    }
    return false;
}

void PatternMatcher::KeepWhatSteps(Element const& step, Ways& ways) const {
    auto kept = ways.begin();
    for (Way way : ways)
        if (TakeStep(step, way))
            *kept++ = way;
    ways.erase(kept, ways.end());
}

void PatternMatcher::SpreadAnyRun(Ways const& from, Ways& to) const {
    to.clear();
    // An earlier way has taken all positions from its own on.
    std::size_t taken = address_.size() + 1;
    for (Way const& way : from) {
        for (std::size_t end = way.position; end < taken; ++end)
            to.push_back({end, way.grouped});
        taken = std::min(taken, way.position);
    }
}

void PatternMatcher::SpreadRange(Element const& range, Ways const& from, Ways& to,
                                 Marks& taken) const {
    to.clear();
    std::size_t const longest = LongestCandidate(ItemsOf(pattern_, range));
    std::fill(taken.begin(), taken.end(), false);
    for (Way way : from) {
        std::size_t const reach = std::min(longest, address_.size() - way.position);
        for (std::size_t length = 1; length <= reach; ++length) {
            Way moved = way;
            std::size_t const end = way.position + length;
            if (!taken[end] && TakeRunTo(range, end, moved)) {
                taken[end] = true;
                to.push_back(moved);
            }
        }
    }
}

bool PatternMatcher::PickWayAtEnd(Ways const& ways) {
    auto const found = std::find_if(ways.begin(), ways.end(),
                                    [this](Way const& way) { return CanEndAt(way.position); });
    if (found == ways.end())
        return false;
    way_ = *found;
    return true;
}

void PatternMatcher::AddCounts(wild_card_counts& counts) const {
    // Outside the groups a match takes every element that was read exactly once, whatever the way.
    CountConstructs(pattern_.substr(0, at_), counts);
    counts.grouped_symbol_count += static_cast<std::int32_t>(way_.grouped.symbols);
    counts.grouped_question_count += static_cast<std::int32_t>(way_.grouped.questions);
}

} // namespace CallRecordingUtils
