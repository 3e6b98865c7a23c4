// Adds reports.

#include "records/counting/ReplayReport.h"

#include <algorithm>

namespace CallRecordingUtils {
namespace {

bool IsBefore(ReplayReport::Problem const& left, ReplayReport::Problem const& right) {
    return left.place < right.place;
}

} // namespace

void ReplayReport::AddProblem(Problem problem) {
    problems.insert(std::upper_bound(problems.begin(), problems.end(), problem, IsBefore),
                    std::move(problem));
    problems.resize(std::min(problems.size(), kMostProblems), Problem{});
}

/// A pair that is dropped comes behind all that stay, and never comes back: so it does not matter
/// in which order pairs turn up.
void ReplayReport::KeepFirstDifferences() {
    while (differences.size() > kMostDifferences) {
        auto const last = std::prev(differences.end());
        moreDifferences.Add(last->second);
        differences.erase(last);
    }
}

Tally& ReplayReport::DifferenceOf(std::pair<Decision, Decision> const& rules) {
    bool const isFull = differences.size() == kMostDifferences;
    if (isFull && rules > differences.rbegin()->first)
        return moreDifferences;
    Tally& tally = differences[rules];
    KeepFirstDifferences();
    return tally;
}

void ReplayReport::AddFiles(ReplayReport const& other) {
    files.resize(std::max(files.size(), other.files.size()));
    for (std::size_t i = 0; i < other.files.size(); ++i) {
        if (files[i].path.empty())
            files[i].path = other.files[i].path;
        if (files[i].reading.title.empty())
            files[i].reading = other.files[i].reading;
        if (files[i].digest.empty())
            files[i].digest = other.files[i].digest;
        files[i].calls += other.files[i].calls;
        files[i].unreadable += other.files[i].unreadable;
    }
    unreadable += other.unreadable;
    for (Problem const& problem : other.problems)
        AddProblem(problem);
    withoutTime += other.withoutTime;
    if (other.firstWithoutTime &&
        (!firstWithoutTime || IsBefore(*other.firstWithoutTime, *firstWithoutTime)))
        firstWithoutTime = other.firstWithoutTime;
    asParties += other.asParties;
    asTyped += other.asTyped;
    asBoth += other.asBoth;
    for (std::size_t i = 0; i < cleaned.size(); ++i)
        cleaned[i] += other.cleaned[i];
}

void ReplayReport::Add(ReplayReport const& other, std::vector<std::size_t> const* places) {
    auto const here = [places](Decision decision) {
        return places == nullptr || !IsRule(decision) ? decision : (*places)[decision];
    };
    AddFiles(other);
    all.Add(other.all);
    instants.Add(other.instants);
    shownTimes.Add(other.shownTimes);
    for (std::size_t i = 0; i < other.byRule.size(); ++i) {
        byRule.resize(std::max(byRule.size(), here(i) + 1));
        byRule[here(i)].Add(other.byRule[i]);
    }
    noRule.Add(other.noRule);
    forbidden.Add(other.forbidden);
    noRuleByDigits.Add(other.noRuleByDigits);
    withoutRulesBefore.Add(other.withoutRulesBefore);
    withoutRulesOfNoTime.Add(other.withoutRulesOfNoTime);
    withoutRulesNotKept.Add(other.withoutRulesNotKept);
    timeline.Add(other.timeline, here);
    reconciliation.Add(other.reconciliation, here);
    different.Add(other.different);
    for (auto const& [rules, tally] : other.differences)
        differences[{here(rules.first), rules.second}].Add(tally);
    moreDifferences.Add(other.moreDifferences);
    KeepFirstDifferences();
    isInterrupted |= other.isInterrupted;
}

void ReplayReport::MoveBehind(std::size_t count) {
    auto const move = [count](Tally& tally) {
        if (tally.example)
            tally.example->place.first += count;
    };
    for (Tally* const tally : {&all, &noRule, &forbidden, &different, &moreDifferences,
                               &withoutRulesBefore, &withoutRulesOfNoTime, &withoutRulesNotKept})
        move(*tally);
    reconciliation.ForEachTally(move);
    for (Tally& tally : byRule)
        move(tally);
    for (auto& entry : noRuleByDigits.Counts())
        move(entry.second);
    for (auto& entry : differences)
        move(entry.second);
    for (Problem& problem : problems)
        problem.place.first += count;
    if (firstWithoutTime)
        firstWithoutTime->place.first += count;
    files.insert(files.begin(), count, File{});
}

} // namespace CallRecordingUtils
