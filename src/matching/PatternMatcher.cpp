// The search of the pattern matcher.

#include "matching/PatternMatcher.h"

#include <algorithm>
#include <array>

namespace CallRecordingUtils {

PatternMatcher::Element PatternMatcher::Read(std::size_t at) const {
    if (at >= end_)
        return {Construct::End, at, at};
    char const c = PatternAt(at);
    if (IsLiteral(c) || c == '?')
        return {Construct::Step, at, at + 1};
    if (c == '*')
        return {Construct::AnyRun, at, at + 1};
    if (c != '[' && c != '<')
        return {Construct::Stop, at, at};
    std::size_t const closing = pattern_.find(c == '[' ? ']' : '>', at);
    if (closing == std::string_view::npos)
        return {Construct::Broken, at, at};
    return {c == '[' ? Construct::Step : Construct::Range, at, closing + 1};
}

PatternMatcher::StepRun PatternMatcher::ReadSteps(std::size_t at) const {
    StepRun run{at, 0, Construct::End};
    for (;;) {
        for (; run.end < pattern_.size() && IsLiteral(pattern_[run.end]); ++run.end)
            ++run.width;
        Element const element = Read(run.end);
        run.next = element.construct;
        if (run.next != Construct::Step)
            return run;
        run.end = element.end;
        ++run.width;
    }
}

std::string_view PatternMatcher::Items(Element const& group) const {
    return pattern_.substr(group.begin + 1, group.end - group.begin - 2);
}

bool PatternMatcher::TakeStep(Element const& step, Place& place) const {
    if (place.position == address_.size())
        return false;
    char const expected = PatternAt(step.begin);
    if (expected == '[') {
        Consumed consumed;
        if (!AdmitsCandidate(Items(step), address_.substr(place.position, 1), consumed))
            return false;
        place.grouped += consumed;
    } else if (expected != '?' && expected != address_[place.position]) {
        return false;
    }
    ++place.position;
    return true;
}

/// Takes the literals from at on; at ends behind them. The commonest steps, without the detour of
/// an element for each.
bool PatternMatcher::TakeLiterals(std::size_t& at, Place& place) const {
    for (; at < pattern_.size() && IsLiteral(pattern_[at]); ++at, ++place.position)
        if (place.position == address_.size() || pattern_[at] != address_[place.position])
            return false;
    return true;
}

/// Takes the steps from begin to end; nothing else stands between.
bool PatternMatcher::TakeSteps(std::size_t begin, std::size_t end, Place& place) const {
    for (std::size_t at = begin;;) {
        if (!TakeLiterals(at, place))
            return false;
        if (at >= end)
            return true;
        Element const step = Read(at);
        if (!TakeStep(step, place))
            return false;
        at = step.end;
    }
}

/// Takes the characters up to end as the run of "*" or of a range expression. The recursion tests
/// the rest of the pattern before the candidate of a range; both must hold, so the order changes
/// nothing.
bool PatternMatcher::TakeRunTo(Element const& run, std::size_t end, Place& place) const {
    if (run.construct == Construct::Range) {
        Consumed consumed;
        std::string_view const candidate = address_.substr(place.position, end - place.position);
        if (!AdmitsCandidate(Items(run), candidate, consumed))
            return false;
        place.grouped += consumed;
    }
    place.position = end;
    return true;
}

bool PatternMatcher::Matches() {
    for (;;) {
        if (!TakeLiterals(at_, place_))
            return false;
        Element const element = Read(at_);
        switch (element.construct) {
        case Construct::End: return place_.position == address_.size();
        case Construct::Stop: return true;
        case Construct::Broken: return false;
        case Construct::Step:
            if (!TakeStep(element, place_))
                return false;
            at_ = element.end;
            break;
        case Construct::AnyRun:
        case Construct::Range: {
            StepRun const rest = ReadSteps(element.end);
            if (rest.next == Construct::Range)
                return MatchFromManyPlaces();
            if (!TakeRun(element, rest))
                return false;
        }
        }
    }
}

/// Takes a "*" or range expression, and the steps of rest behind it when the run has to be
/// searched.
bool PatternMatcher::TakeRun(Element const& run, StepRun const& rest) {
    std::size_t const left = address_.size() - place_.position;
    if (rest.next == Construct::Broken || rest.width > left)
        return false;
    if (rest.next != Construct::End)
        return SearchRun(run, rest, left - rest.width);
    // What follows has one length, so the run can only end at one position.
    at_ = run.end;
    return TakeRunTo(run, address_.size() - rest.width, place_);
}

/// Finds the shortest run, of at most longest characters, behind which the steps of rest fit. After
/// them comes a "*", or the end of the language. If that matches after a longer run, it does after
/// this one as well, since the "*" can take the characters between; so no other run need ever be
/// tried.
bool PatternMatcher::SearchRun(Element const& run, StepRun const& rest, std::size_t longest) {
    bool const isRange = run.construct == Construct::Range;
    if (isRange)
        longest = std::min(longest, LongestCandidate(Items(run)));
    for (std::size_t length = isRange ? 1 : 0; length <= longest; ++length) {
        Place place = place_;
        if (TakeRunTo(run, place.position + length, place) && TakeSteps(run.end, rest.end, place)) {
            place_ = place;
            at_ = rest.end;
            return true;
        }
    }
    return false;
}

/// Goes on from place_ when a range expression can end in several positions. For addresses of usual
/// lengths the places fit into the arena, and nothing is allocated.
bool PatternMatcher::MatchFromManyPlaces() {
    std::array<std::byte, 4608> memory;
    std::pmr::monotonic_buffer_resource arena(memory.data(), memory.size());
    Places places(&arena);
    Places next(&arena);
    Marks taken(address_.size() + 1, false, &arena);
    places.reserve(address_.size() + 1);
    next.reserve(address_.size() + 1);
    places.push_back(place_);
    while (!places.empty()) {
        Element const element = Read(at_);
        switch (element.construct) {
        case Construct::End: return PickPlaceAtEnd(places);
        case Construct::Stop: place_ = places.front(); return true;
        case Construct::Broken: return false;
        case Construct::Step: KeepWhatSteps(element, places); break;
        case Construct::AnyRun:
            SpreadAnyRun(places, next);
            places.swap(next);
            break;
        case Construct::Range:
            SpreadRange(element, places, next, taken);
            places.swap(next);
            break;
        }
        at_ = element.end;
    }
    return false;
}

void PatternMatcher::KeepWhatSteps(Element const& step, Places& places) const {
    auto kept = places.begin();
    for (Place place : places)
        if (TakeStep(step, place))
            *kept++ = place;
    places.erase(kept, places.end());
}

void PatternMatcher::SpreadAnyRun(Places const& from, Places& to) const {
    to.clear();
    // An earlier place has taken all positions from its own on.
    std::size_t taken = address_.size() + 1;
    for (Place const& place : from) {
        for (std::size_t end = place.position; end < taken; ++end)
            to.push_back({end, place.grouped});
        taken = std::min(taken, place.position);
    }
}

void PatternMatcher::SpreadRange(Element const& range, Places const& from, Places& to,
                                 Marks& taken) const {
    to.clear();
    std::size_t const longest = LongestCandidate(Items(range));
    std::fill(taken.begin(), taken.end(), false);
    for (Place place : from) {
        std::size_t const reach = std::min(longest, address_.size() - place.position);
        for (std::size_t length = 1; length <= reach; ++length) {
            Place moved = place;
            std::size_t const end = place.position + length;
            if (!taken[end] && TakeRunTo(range, end, moved)) {
                taken[end] = true;
                to.push_back(moved);
            }
        }
    }
}

bool PatternMatcher::PickPlaceAtEnd(Places const& places) {
    auto const found = std::find_if(places.begin(), places.end(), [this](Place const& place) {
        return place.position == address_.size();
    });
    if (found == places.end())
        return false;
    place_ = *found;
    return true;
}

void PatternMatcher::AddCounts(wild_card_counts& counts) const {
    // Outside the groups a match takes every element that was read exactly once, whatever the way.
    CountConstructs(pattern_.substr(0, at_), counts);
    CountConstructs(tail_.substr(0, at_ - std::min(at_, pattern_.size())), counts);
    counts.grouped_symbol_count += static_cast<std::int32_t>(place_.grouped.symbols);
    counts.grouped_question_count += static_cast<std::int32_t>(place_.grouped.questions);
}

} // namespace CallRecordingUtils
