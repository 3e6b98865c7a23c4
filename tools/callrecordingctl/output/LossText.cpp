// Compares what two rules do with a call.

#include "output/LossText.h"

#include <vector>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "model/RecordingOutcome.h"
#include "output/CallText.h"
#include "text/Printable.h"
#include "json/Names.h"

namespace callrecordingctl {
namespace {

/// How rule records a call, as far as the other one does not do the same.
std::string How(Rule const& rule, Rule const& other) {
    std::vector<std::string> how;
    bool const isAll = ForbidsRecording(other);
    if (isAll || rule.record_to != other.record_to)
        how.push_back(rule.record_to.empty() ? "to no named place" : "to " + rule.record_to);
    if (isAll || rule.recording_duration != other.recording_duration)
        how.push_back(rule.recording_duration.empty() ? "without a duration"
                                                      : "for " + rule.recording_duration);
    if (isAll || rule.call_recording_type != other.call_recording_type)
        how.push_back(fmt::format("with type {}", static_cast<int>(rule.call_recording_type)));
    return Printable(fmt::format("{}", fmt::join(how, ", ")));
}

nlohmann::ordered_json OutcomeToJson(Rule const& rule) {
    if (ForbidsRecording(rule))
        return {{"recorded", false}};
    return {{"recorded", true},
            {NameOf(RuleMember::RecordingType), static_cast<int>(rule.call_recording_type)},
            {NameOf(RuleMember::RecordTo), rule.record_to},
            {NameOf(RuleMember::Duration), rule.recording_duration}};
}

} // namespace

std::string LossText(RuleList const& rules, std::size_t loser, std::size_t taker,
                     ExampleCall const& call) {
    Rule const& own = rules[loser];
    Rule const& by = rules[taker];
    std::string text = fmt::format("{}: rule {} ", CallText(call), by.callrecordingrule_id);
    if (HaveSameOutcome(&own, &by))
        return text + "takes it, and does what this rule would do";
    text += ForbidsRecording(by) ? "says never" : "records it " + How(by, own);
    return text + (ForbidsRecording(own) ? ", this rule says never"
                                         : ", this rule would record it " + How(own, by));
}

nlohmann::ordered_json LossToJson(RuleList const& rules, std::size_t loser, std::size_t taker,
                                  ExampleCall const& call) {
    return {{"call", CallToJson(call)},
            {"to", rules[taker].callrecordingrule_id},
            {"outcome", OutcomeToJson(rules[taker])},
            {"own_outcome", OutcomeToJson(rules[loser])}};
}

} // namespace callrecordingctl
