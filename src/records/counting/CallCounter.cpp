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

Decision Decide(RuleSet const& rules, PartyCall const& call) {
    Rule const* const rule = rules.Deciding(call);
    return rule == nullptr ? kNoRule : rules.PlaceOf(*rule);
}

} // namespace

/// One side of a call. A type that no address has becomes the problem of the record.
std::optional<AskedSide> CallCounter::ReadSide(CallRecord& record, Column address,
                                               Column type) const {
    std::string const& typeText = record.values[type];
    std::optional<CallType> callType;
    if (!typeText.empty())
        callType = options_.parseCallType(typeText);
    if (!typeText.empty() && callType.value_or(CALL_TYPE_ANY) == CALL_TYPE_ANY) {
        record.problem = "\"" + typeText + "\" is not the type of an address";
        return std::nullopt;
    }
    return ReadAskedSide(record.values[address], callType);
}

void CallCounter::CountQuestion(AskedSide const& from, AskedSide const& to) {
    for (std::size_t i = 0; i < kCleaningCount; ++i)
        report_.cleaned[i] += (from.cleanings[i] ? 1U : 0U) + (to.cleanings[i] ? 1U : 0U);
    ++(from.type && to.type   ? report_.asTyped
       : from.type || to.type ? report_.asBoth
                              : report_.asParties);
}

void CallCounter::Take(CallRecord& record, RecordPlace place, std::string const& path) {
    while (report_.files.size() <= place.first)
        report_.files.emplace_back();
    ReplayReport::File& file = report_.files[place.first];
    file.path = path;
    std::optional<AskedSide> from, to;
    if (record.problem.empty())
        from = ReadSide(record, kColumnFrom, kColumnFromType);
    if (record.problem.empty())
        to = ReadSide(record, kColumnTo, kColumnToType);
    if (!record.problem.empty()) {
        ++file.unreadable;
        ++report_.unreadable;
        if (report_.problems.size() < ReplayReport::kMostProblems)
            report_.AddProblem({path, record.line, Shortened(record.problem), place});
        return;
    }
    ++file.calls;
    CountQuestion(*from, *to);
    PartyCall const call{from->texts, to->texts};
    std::optional<Decision> other;
    if (others_ != nullptr)
        other = Decide(*others_, call);
    DecidedCall const decided{path, record, *from, *to, Decide(rules_, call), other};
    Count(decided, place);
    if (options_.onCall)
        options_.onCall(decided);
}

std::optional<CallTime> CallCounter::ReadTime(DecidedCall const& call, RecordPlace place) {
    std::string const& text = call.record.values[kColumnTime];
    if (text.empty())
        return std::nullopt;
    std::optional<CallTime> const time = ReadCallTime(text);
    if (!time && report_.withoutTime++ == 0)
        report_.firstWithoutTime = {call.file, call.record.line, Shortened(text), place};
    return time;
}

void CallCounter::Count(DecidedCall const& call, RecordPlace place) {
    std::optional<CallTime> const time = ReadTime(call, place);
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
