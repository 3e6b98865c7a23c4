// Reads the rule file and its history for a replay.

#include "commands/ReplayRules.h"

#include <ctime>
#include <filesystem>
#include <limits>

#include <fmt/format.h>

#include "CommandLine.h"
#include "Rules.h"
#include "administration/edit/Changes.h"
#include "administration/inspection/ReadRules.h"
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

/// What a clock on the wall shows at an instant.
CallTime OnTheWall(std::int64_t seconds) {
    std::time_t const instant = seconds;
    std::tm parts{};
    return localtime_r(&instant, &parts) != nullptr ? timegm(&parts) : seconds;
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
    std::vector<CallTime> begins;
    for (std::size_t i = kFirstRecorded; i < timeline_->Eras().size(); ++i)
        begins.push_back(OnTheWall(timeline_->Eras()[i].from));
    rules_.emplace(std::move(begins), [this](std::size_t era) {
        return RulesIn(timeline_->Eras()[era + kFirstRecorded]);
    });
}

void ReplayRules::AskAsOf(std::string const& when) {
    std::int64_t const seconds = ParseTime("--as-of", when);
    RuleEra const& era = timeline_->At(seconds);
    if (era.from == RuleEra::kAlways)
        throw Failure(kExitUnreadable,
                      fmt::format("{}: the history of its rules begins later, at {}", path_,
                                  TimeText(OnTheWall(timeline_->Eras()[kFirstRecorded].from))));
    std::optional<RuleList> rules = RulesIn(era);
    if (!rules)
        throw Failure(kExitUnreadable, fmt::format("{}: the rules of {} are not kept any more",
                                                   path_, TimeText(OnTheWall(seconds))));
    facts_.asked.asOf = TimeText(OnTheWall(seconds));
    facts_.here.rules = std::move(*rules);
    facts_.here.digest = era.digest;
    rules_.emplace(facts_.here.rules);
}

std::optional<RuleList> ReplayRules::RulesIn(RuleEra const& era) {
    std::optional<std::string> const text = timeline_->TextOf(era);
    if (!text)
        return std::nullopt;
    return RulesOf(*text, fmt::format("{} in state {}", path_, era.digest.substr(0, 8)));
}

EditFacts ReplayRules::EditOf(std::size_t era, bool withChanges) {
    RuleEra const& after = timeline_->Eras()[era];
    HistoryEntry const& entry = *after.edit;
    EditFacts edit{entry.number,    OnTheWall(after.from), std::nullopt,       entry.IsOutside(),
                   entry.note.user, entry.note.command,    entry.note.message, {}};
    if (edit.isOutside)
        edit.earliest = after.mayBeginAt == RuleEra::kAlways ? std::numeric_limits<CallTime>::min()
                                                             : OnTheWall(after.mayBeginAt);
    if (!withChanges) {
        edit.changes.emplace_back(
            "what changed was not looked up: there are more than 100 later edits");
        return edit;
    }
    std::optional<RuleList> const old = RulesIn(timeline_->Eras()[era - 1]);
    std::optional<RuleList> const now = RulesIn(after);
    if (!old || !now) {
        edit.changes.emplace_back("what changed is not known: these rules are not kept any more");
        return edit;
    }
    std::size_t others = 0;
    for (Change const& change : ChangesBetween(*old, *now))
        if (change.isMeant && edit.changes.size() < kMostChanges)
            edit.changes.push_back(Sentence(change, now->size()));
        else
            others += change.isMeant ? 1 : 0;
    if (others > 0)
        edit.changes.push_back(fmt::format("and {} more", others));
    if (edit.changes.empty())
        edit.changes.emplace_back("no rule changed; comments or other entries did");
    return edit;
}

/// All edits since the first call, or of a part all there are.
void ReplayRules::AddEdits(ReplayState& state, bool isPart) {
    std::optional<CallTime> first = state.calls.apart.all.first;
    for (auto const& [era, report] : state.calls.byEra)
        if (report.all.first)
            first = std::min(first.value_or(*report.all.first), *report.all.first);
    if (!timeline_ || (!first && !isPart))
        return;
    std::vector<std::size_t> since;
    for (std::size_t i = kFirstRecorded; i < timeline_->Eras().size(); ++i)
        if (isPart || OnTheWall(timeline_->Eras()[i].from) >= *first)
            since.push_back(i);
    for (std::size_t const era : since)
        state.facts.edits.push_back(EditOf(era, era + kMostEdits >= timeline_->Eras().size()));
}

ReplayState ReplayRules::StateOf(CountedCalls&& calls, bool isPart) {
    ReplayState state{facts_, {}, std::move(calls)};
    for (auto const& [index, report] : state.calls.byEra) {
        if (!facts_.asked.areOfTheirTime)
            continue;
        RuleEra const& era = timeline_->Eras()[index + kFirstRecorded];
        EraFacts& facts = state.eras[index];
        facts.from = OnTheWall(era.from);
        if (era.to != RuleEra::kNow)
            facts.to = OnTheWall(era.to);
        facts.digest = era.digest;
        facts.rules = RulesIn(era).value_or(RuleList());
    }
    AddEdits(state, isPart);
    return state;
}

} // namespace callrecordingctl
