// Counts a call under all that it belongs to.

#include "records/counting/CallCounter.h"

#include "model/RecordingOutcome.h"

namespace CallRecordingUtils {
namespace {

/// text, cut when it is longer than anybody wants to read.
std::string Shortened(std::string const& text) {
    constexpr std::size_t kMost = 160;
    if (text.size() <= kMost)
        return text;
    std::size_t end = kMost; // Not inside a UTF-8 character.
    while (end > kMost - 4 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80)
        --end;
    return text.substr(0, end) + "...";
}

Rule const* RuleOf(RuleSet const& rules, Decision decision) {
    return decision == kNoRule ? nullptr : &rules.Rules()[decision];
}

AskedSide ReadSide(CallRecord::Side const& side) {
    AskedSide asked = ReadAskedSide(side.address, side.type);
    if (side.hadName)
        asked.cleanings.set(kCleaningName);
    return asked;
}

Decision Decide(RuleSet const& rules, PartyCall const& call) {
    Rule const* const rule = rules.Deciding(call);
    return rule == nullptr ? kNoRule : rules.PlaceOf(*rule);
}

} // namespace

Example CallCounter::ExampleOf(CallRecord const& record, RecordPlace place,
                               std::string const& path) {
    return {Shortened(record.values[kColumnFrom]),
            Shortened(record.values[kColumnTo]),
            record.time,
            path,
            record.line,
            place};
}

ReplayReport::File& CallCounter::FileOf(ReplayReport& report, RecordPlace place,
                                        std::string const& path) {
    while (report.files.size() <= place.first)
        report.files.emplace_back();
    ReplayReport::File& file = report.files[place.first];
    file.path = path;
    return file;
}

void CallCounter::TakeUnreadable(CallRecord const& record, RecordPlace place,
                                 std::string const& path) {
    ReplayReport& report = calls_.apart;
    ++FileOf(report, place, path).unreadable;
    ++report.unreadable;
    if (report.problems.size() < ReplayReport::kMostProblems)
        report.AddProblem({path, record.line, Shortened(record.problem), place});
    if (options_.onUnreadable)
        options_.onUnreadable(record, path);
}

/// Counts what is known of a call without any rule.
template <typename MakeExample>
void CallCounter::CountCall(CallRecord const& record, AskedSide const& from, AskedSide const& to,
                            ReplayReport& report, MakeExample const& example) const {
    report.all.Count(record.time, example);
    if (record.instant)
        report.instants.Take(*record.instant);
    else if (record.time)
        report.shownTimes.Take(*record.time);
    for (std::size_t i = 0; i < kCleaningCount; ++i)
        report.cleaned[i] += (from.cleanings[i] ? 1U : 0U) + (to.cleanings[i] ? 1U : 0U);
    ++(from.type && to.type   ? report.asTyped
       : from.type || to.type ? report.asBoth
                              : report.asParties);
    std::string const& time = record.values[kColumnTime];
    if (!record.time && !time.empty() && report.withoutTime++ == 0) {
        Example const first = example();
        report.firstWithoutTime = {first.file, first.line, Shortened(time), first.place};
    }
}

template <typename MakeExample>
void CallCounter::CountDecision(DecidedCall const& call, RuleSet const& rules, ReplayReport& report,
                                MakeExample const& example) const {
    std::optional<CallTime> const time = call.record.time;
    Rule const* const rule = RuleOf(rules, call.decision);
    if (rule == nullptr) {
        report.noRule.Count(time, example);
        report.noRuleByDigits.Count(call.to.texts.Shown(CALL_TYPE_ANY), time, example);
    } else {
        report.byRule[call.decision].Count(time, example);
        if (ForbidsRecording(*rule))
            report.forbidden.Count(time, example);
    }
    if (time)
        report.timeline.Count(*time, call.decision);
    Reconcile(call.record, call.decision, Records(rule), report, example);
    if (!call.other || HaveSameOutcome(rule, RuleOf(*others_, *call.other)))
        return;
    report.different.Count(time, example);
    report.DifferenceOf({call.decision, *call.other}).Count(time, example);
}

template <typename MakeExample>
void CallCounter::Reconcile(CallRecord const& record, Decision decision,
                            Reconciliation::ByRules byRules, ReplayReport& report,
                            MakeExample const& example) const {
    std::optional<WasRecorded> was;
    if (options_.wasRecorded)
        was = options_.wasRecorded(record);
    if (was == WasRecorded::Lost) {
        report.reconciliation.lost.Count(record.time, example);
        was = WasRecorded::No;
    }
    Answer const answer = options_.answerTo ? options_.answerTo(record) : Answer::None;
    if (was)
        report.reconciliation
            .TallyOf(Reconciliation::OutcomeOf(Reconciliation::Should(answer, byRules), *was),
                     decision)
            .Count(record.time, example);
    if (options_.answerTo)
        report.reconciliation.TallyOf({answer, byRules, was.value_or(WasRecorded::Unknown)})
            .Count(record.time, example);
}

void CallCounter::Take(CallRecord const& record, RecordPlace place, std::string const& path) {
    if (!record.problem.empty())
        return TakeUnreadable(record, place, path);
    auto const example = [&] { return ExampleOf(record, place, path); };
    std::optional<std::size_t> const era = rules_.EraOf(record.time, record.instant);
    RuleSet const* const rules = era ? rules_.In(*era) : nullptr;
    ReplayReport& report = rules != nullptr ? calls_.byEra[*era] : calls_.apart;
    ++FileOf(report, place, path).calls;
    AskedSide const from = ReadSide(record.from);
    AskedSide const to = ReadSide(record.to);
    CountCall(record, from, to, report, example);
    if (rules == nullptr) {
        Tally& undecided = !record.time ? report.withoutRulesOfNoTime
                           : era        ? report.withoutRulesNotKept
                                        : report.withoutRulesBefore;
        undecided.Count(record.time, example);
        return Reconcile(record, kNotDecided, std::nullopt, report, example);
    }
    report.byRule.resize(rules->Rules().size());
    PartyCall const call{from.texts, to.texts};
    std::optional<Decision> other;
    if (others_ != nullptr)
        other = Decide(*others_, call);
    DecidedCall const decided{path, record, from, to, Decide(*rules, call), other};
    CountDecision(decided, *rules, report, example);
    if (options_.onCall)
        options_.onCall(decided);
}

} // namespace CallRecordingUtils
