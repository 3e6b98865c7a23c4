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

void CallCounter::CountQuestion(AskedSide const& from, AskedSide const& to) {
    for (std::size_t i = 0; i < kCleaningCount; ++i)
        report_.cleaned[i] += (from.cleanings[i] ? 1U : 0U) + (to.cleanings[i] ? 1U : 0U);
    ++(from.type && to.type   ? report_.asTyped
       : from.type || to.type ? report_.asBoth
                              : report_.asParties);
}

void CallCounter::Take(CallRecord const& record, RecordPlace place, std::string const& path) {
    while (report_.files.size() <= place.first)
        report_.files.emplace_back();
    ReplayReport::File& file = report_.files[place.first];
    file.path = path;
    if (!record.problem.empty()) {
        ++file.unreadable;
        ++report_.unreadable;
        if (report_.problems.size() < ReplayReport::kMostProblems)
            report_.AddProblem({path, record.line, Shortened(record.problem), place});
        if (options_.onUnreadable)
            options_.onUnreadable(record, path);
        return;
    }
    ++file.calls;
    AskedSide const from = ReadSide(record.from);
    AskedSide const to = ReadSide(record.to);
    CountQuestion(from, to);
    PartyCall const call{from.texts, to.texts};
    std::optional<Decision> other;
    if (others_ != nullptr)
        other = Decide(*others_, call);
    DecidedCall const decided{path, record, from, to, Decide(rules_, call), other};
    Count(decided, place);
    if (options_.onCall)
        options_.onCall(decided);
}

void CallCounter::CountTime(DecidedCall const& call, RecordPlace place) {
    std::string const& text = call.record.values[kColumnTime];
    if (!call.record.time && !text.empty() && report_.withoutTime++ == 0)
        report_.firstWithoutTime = {call.file, call.record.line, Shortened(text), place};
}

void CallCounter::Count(DecidedCall const& call, RecordPlace place) {
    CountTime(call, place);
    std::optional<CallTime> const time = call.record.time;
    auto const example = [&call, &time, &place] {
        return Example{Shortened(call.record.values[kColumnFrom]),
                       Shortened(call.record.values[kColumnTo]),
                       time,
                       call.file,
                       call.record.line,
                       place};
    };
    report_.all.Count(time, example);
    Rule const* const rule = RuleOf(rules_, call.decision);
    if (rule == nullptr) {
        report_.noRule.Count(time, example);
        report_.noRuleByDigits.Count(call.to.texts.Shown(CALL_TYPE_ANY), time, example);
    } else {
        report_.byRule[call.decision].Count(time, example);
        if (ForbidsRecording(*rule))
            report_.forbidden.Count(time, example);
    }
    if (time)
        report_.timeline.Count(*time, call.decision);
    if (!call.other || HaveSameOutcome(rule, RuleOf(*others_, *call.other)))
        return;
    report_.different.Count(time, example);
    report_.DifferenceOf({call.decision, *call.other}).Count(time, example);
}

} // namespace CallRecordingUtils
