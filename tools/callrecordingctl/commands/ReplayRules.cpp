// Reads the rule file and its history for a replay.

#include "commands/ReplayRules.h"

#include <algorithm>
#include <filesystem>

#include <fmt/format.h>

#include "CommandLine.h"
#include "Rules.h"
#include "administration/edit/Changes.h"
#include "administration/inspection/ReadRules.h"
#include "common/Error.h"
#include "output/EditReport.h"

namespace callrecordingctl {
namespace {

constexpr std::size_t kMostChanges = 20;  // Of one edit.
constexpr std::size_t kMostEdits = 100;   // The last ones, whose changes are looked up.
constexpr std::size_t kFirstRecorded = 1; // The era before it has no known beginning.

RuleFileFacts ReadRuleFile(std::string const& path) {
    RuleFileFacts facts{path, "", {}};
    facts.rules = LoadRules(path, facts.digest);
    if (!HasRuleFile(path))
        facts.digest.clear();
    return facts;
}

/// When the first and the last call were.
std::optional<Period> PeriodOf(CountedCalls const& calls) {
    Extent instants = calls.apart.instants;
    Extent shown = calls.apart.shownTimes;
    for (auto const& entry : calls.byEra) {
        instants.Add(entry.second.instants);
        shown.Add(entry.second.shownTimes);
    }
    std::optional<Period> period;
    if (instants.first)
        period = Period{{*instants.first, *instants.first}, {*instants.last, *instants.last}};
    if (shown.first)
        Widen(period, Period{InstantsOf(*shown.first), InstantsOf(*shown.last)});
    return period;
}

/// Where a clock was set back, an era begins after the one behind it, and ends before it begins: it
/// gets the beginning of the one behind it.
std::vector<Moment> BeginsOf(std::vector<RuleEra> const& eras) {
    std::vector<Moment> begins(eras.size() - kFirstRecorded);
    Moment next{RuleEra::kNow, RuleEra::kNow};
    for (std::size_t i = begins.size(); i-- > 0; begins[i] = next) {
        Moment const begin = MomentAt(eras[i + kFirstRecorded].from);
        next = {std::min(begin.instant, next.instant), std::min(begin.shown, next.shown)};
    }
    return begins;
}

} // namespace

ReplayRules::ReplayRules(std::string const& path, std::string const& asOf,
                         std::string const& against)
    : path_(path) {
    if (!against.empty() && !std::filesystem::exists(against))
        throw Failure(kExitUnreadable, against + ": there is no such file");
    if (!against.empty()) // A name without a directory would read as one in none.
        facts_.there = ReadRuleFile(std::filesystem::absolute(against).string());
    facts_.here = ReadRuleFile(path);
    ReadTimeline(!asOf.empty());
    if (asOf == "history")
        AskOfTheirTime();
    else if (!asOf.empty())
        AskAsOf(asOf);
    else
        rules_.emplace(facts_.here.rules);
}

/// Rules of now can do without the history, which only tells who changed them.
void ReplayRules::ReadTimeline(bool isNeeded) {
    try {
        timeline_.emplace(path_);
    } catch (std::exception const& error) {
        if (isNeeded)
            throw Failure(kExitUnreadable, error.what());
        Say("whether the rules were edited meanwhile is not known: {}", error.what());
    }
    if (isNeeded && timeline_->Eras().size() <= kFirstRecorded)
        throw Failure(kExitUnreadable, path_ + ": there is no history of its rules yet");
}

void ReplayRules::AskOfTheirTime() {
    facts_.asked.areOfTheirTime = true;
    facts_.here.rules.clear();
    begins_ = BeginsOf(timeline_->Eras());
    rules_.emplace(begins_, [this](std::size_t era) {
        return Read(timeline_->Eras()[era + kFirstRecorded]).rules;
    });
}

void ReplayRules::AskAsOf(std::string const& when) {
    std::int64_t const seconds = ParseTime("--as-of", when);
    RuleEra const& era = timeline_->At(seconds);
    if (era.from == RuleEra::kAlways)
        throw Failure(
            kExitUnreadable,
            fmt::format("{}: the history of its rules begins later, at {}", path_,
                        TimeText(MomentAt(timeline_->Eras()[kFirstRecorded].from).shown)));
    facts_.asked.asOf = TimeText(MomentAt(seconds).shown);
    Known known = Read(era);
    if (!known.rules)
        throw Failure(kExitUnreadable, fmt::format("{}: the rules of {}: {}", path_,
                                                   facts_.asked.asOf, known.problem));
    facts_.here.rules = std::move(*known.rules);
    facts_.here.digest = era.digest;
    rules_.emplace(facts_.here.rules);
}

ReplayRules::Known ReplayRules::Read(RuleEra const& era) {
    Known known{era.digest, std::nullopt, ""};
    try {
        if (std::optional<std::string> const text = timeline_->TextOf(era))
            known.rules = RulesOf(*text, "state " + era.digest.substr(0, 8));
        else
            known.problem = "not kept any more";
    } catch (Error const& error) { // A file that a hand broke has a state like any other.
        known.problem = error.what();
    }
    return known;
}

ReplayRules::Known const& ReplayRules::RulesIn(RuleEra const& era) {
    auto const found = std::find_if(read_.begin(), read_.end(), [&era](Known const& known) {
        return known.digest == era.digest;
    });
    if (found != read_.end()) {
        read_.splice(read_.begin(), read_, found);
        return read_.front();
    }
    read_.push_front(Read(era));
    if (read_.size() > 2)
        read_.pop_back();
    return read_.front();
}

EditFacts ReplayRules::EditOf(std::size_t era) const {
    RuleEra const& after = timeline_->Eras()[era];
    HistoryEntry const& entry = *after.edit;
    EditFacts edit;
    edit.number = entry.number;
    edit.time = MomentAt(after.from);
    edit.isOutside = entry.IsOutside();
    if (edit.isOutside && after.mayBeginAt != RuleEra::kAlways)
        edit.earliest = MomentAt(after.mayBeginAt);
    edit.user = entry.note.user;
    edit.command = entry.note.command;
    edit.message = entry.note.message;
    return edit;
}

std::vector<std::string> ReplayRules::ChangesOf(std::size_t era) {
    std::vector<RuleEra> const& eras = timeline_->Eras();
    if (era + kMostEdits < eras.size())
        return {"what changed was not looked up: there are more than 100 later edits"};
    Known const& old = RulesIn(eras[era - 1]);
    Known const& now = RulesIn(eras[era]);
    for (Known const* const known : {&old, &now})
        if (!known->rules)
            return {fmt::format("what changed is not known: the rules of state {} are not: {}",
                                known->digest.substr(0, 8), known->problem)};
    std::vector<std::string> sentences;
    std::size_t others = 0;
    for (Change const& change : ChangesBetween(*old.rules, *now.rules))
        if (change.isMeant && sentences.size() < kMostChanges)
            sentences.push_back(Sentence(change, now.rules->size()));
        else
            others += change.isMeant ? 1 : 0;
    if (others > 0)
        sentences.push_back(fmt::format("and {} more", others));
    if (sentences.empty())
        sentences.emplace_back("no rule changed; comments or other entries did");
    return sentences;
}

/// Without its rules.
EraFacts ReplayRules::EraOf(std::size_t era) const {
    auto const begin = [this](std::size_t which) {
        return Moment{begins_[which - kFirstRecorded].instant,
                      MomentAt(timeline_->Eras()[which].from).shown};
    };
    EraFacts facts;
    facts.from = begin(era);
    if (era + 1 < timeline_->Eras().size())
        facts.to = begin(era + 1);
    facts.digest = timeline_->Eras()[era].digest;
    return facts;
}

ReplayState ReplayRules::StateOf(CountedCalls&& calls, bool isPart) {
    ReplayState state{facts_, PeriodOf(calls), {}, {}, std::move(calls)};
    std::size_t const eras = timeline_ ? timeline_->Eras().size() : 0;
    for (std::size_t i = kFirstRecorded; i < eras; ++i) {
        if (facts_.asked.areOfTheirTime) {
            EraFacts era = EraOf(i);
            std::size_t const index = i - kFirstRecorded;
            if (isPart || IsWithin(era, state.period) || state.calls.byEra.count(index) > 0) {
                if (state.calls.byEra.count(index) > 0) { // They were read for the calls.
                    era.forms = state.forms.Take(rules_->In(index)->Rules());
                } else {
                    Known const& known = RulesIn(timeline_->Eras()[i]);
                    era.problem = known.problem;
                    if (known.rules)
                        era.forms = state.forms.Take(*known.rules);
                }
                state.eras.emplace(index, std::move(era));
            }
        }
        EditFacts edit = EditOf(i);
        if (!isPart && (!state.period || edit.time.instant < state.period->first.earliest))
            continue;
        edit.changes = ChangesOf(i);
        state.facts.edits.push_back(std::move(edit));
    }
    return state;
}

} // namespace callrecordingctl
