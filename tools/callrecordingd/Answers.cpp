// Decides calls, and words the answers.

#include "Answers.h"

#include <algorithm>
#include <numeric>

#include <fmt/format.h>

namespace callrecordingd {

using namespace CallRecordingUtils;

namespace {

/// text as one field of a line: without what would end the field or the line.
std::string Field(std::string text) {
    std::replace_if(
        text.begin(), text.end(),
        [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7F'; }, ' ');
    return text;
}

} // namespace

Party AskedParty::Read() const {
    if (host || port)
        return ReadParty(address, host.value_or(""), port.value_or(""));
    return ReadParty(address);
}

PartyCall Question::Call() const {
    return {SideTexts(from.Read()), SideTexts(to.Read())};
}

CallRecordingRuleParams const* Answer::Rule() const {
    bool const hasRule = verdict == Verdict::Recorded || verdict == Verdict::Forbidden;
    return hasRule ? &rules->loaded->rules.Rules()[place] : nullptr;
}

std::string Answer::Json() const {
    if (verdict == Verdict::Undecided)
        return "{\"error\":\"no rules were read yet\"}";
    return fmt::format("{{\"recorded\":{},\"rule\":{},\"state\":\"{}\"}}",
                       verdict == Verdict::Recorded,
                       Rule() != nullptr ? rules->texts[place] : "null", rules->state);
}

std::string Answer::Line() const {
    CallRecordingRuleParams const* const rule = Rule();
    char const* const word = verdict == Verdict::Recorded    ? "yes"
                             : verdict == Verdict::Undecided ? "undecided"
                                                             : "no";
    if (rule == nullptr)
        return fmt::format("{}\t\t\t\t", word);
    return fmt::format("{}\t{}\t{}\t{}\t{}", word, rule->callrecordingrule_id,
                       Field(rule->recording_duration), static_cast<int>(rule->call_recording_type),
                       Field(rule->record_to));
}

Answer Decide(LiveRules const& rules, Question const& question) {
    Answer answer;
    answer.rules = rules.Now();
    if (answer.rules == nullptr)
        return answer;
    RuleSet const& set = answer.rules->loaded->rules;
    CallRecordingRuleParams const* const rule = set.Deciding(question.Call());
    if (rule == nullptr) {
        answer.verdict = Verdict::NotRecorded;
        return answer;
    }
    answer.place = set.PlaceOf(*rule);
    answer.verdict = ForbidsRecording(*rule) ? Verdict::Forbidden : Verdict::Recorded;
    return answer;
}

std::uint64_t AnswerCounts::Counts::All() const {
    return std::accumulate(buckets.begin(), buckets.end(), std::uint64_t{0});
}

void AnswerCounts::Count(Answer const& answer, std::chrono::nanoseconds time) {
    double const seconds = std::chrono::duration<double>(time).count();
    auto const bucket = std::lower_bound(kBounds.begin(), kBounds.end(), seconds) - kBounds.begin();
    std::lock_guard<std::mutex> const lock(mutex_);
    ++counts_.buckets[static_cast<std::size_t>(bucket)];
    counts_.seconds += seconds;
    switch (answer.verdict) {
    case Verdict::Recorded: ++counts_.byRule[answer.Rule()->callrecordingrule_id].recorded; break;
    case Verdict::Forbidden: ++counts_.byRule[answer.Rule()->callrecordingrule_id].forbidden; break;
    case Verdict::NotRecorded: ++counts_.notRecorded; break;
    case Verdict::Undecided: ++counts_.undecided; break;
    }
}

AnswerCounts::Counts AnswerCounts::Now() const {
    std::lock_guard<std::mutex> const lock(mutex_);
    return counts_;
}

} // namespace callrecordingd
