// Compares what two rules do with a call.

#include "output/LossText.h"

#include <fmt/format.h>

#include "analysis/RecordingOutcome.h"
#include "output/CallText.h"
#include "text/Printable.h"

namespace callrecordingctl {
namespace {

/// What rule does with a call, without what it says the same as the other one.
std::string How(Rule const& rule, Rule const& other) {
    std::string how;
    bool const isOther = Forbids(other);
    if (rule.record_to != other.record_to)
        how += rule.record_to.empty() ? " to no named place" : " to " + rule.record_to;
    if (isOther || rule.recording_duration != other.recording_duration)
        how += rule.recording_duration.empty() ? " without a duration"
                                               : " for " + rule.recording_duration;
    if (isOther || rule.call_recording_type != other.call_recording_type)
        how += fmt::format(" with type {}", static_cast<int>(rule.call_recording_type));
    return Printable(how);
}

nlohmann::ordered_json OutcomeToJson(Rule const& rule) {
    if (Forbids(rule))
        return {{"recorded", false}};
    return {{"recorded", true},
            {"call_recording_type", static_cast<int>(rule.call_recording_type)},
            {"record_to", rule.record_to},
            {"recording_duration", rule.recording_duration}};
}

} // namespace

std::string LossText(RuleList const& rules, std::size_t loser, std::size_t taker,
                     ExampleCall const& call) {
    Rule const& own = rules[loser];
    Rule const& by = rules[taker];
    std::string text = fmt::format("{}: rule {} ", CallText(call), by.callrecordingrule_id);
    if (AreAlike(&own, &by))
        return text + "takes it, and does what this rule would do";
    text += Forbids(by) ? "says never" : "records it" + How(by, own);
    return text +
           (Forbids(own) ? ", this rule says never" : ", this rule would record it" + How(own, by));
}

nlohmann::ordered_json LossToJson(RuleList const& rules, std::size_t loser, std::size_t taker,
                                  ExampleCall const& call) {
    return {{"call", CallToJson(call)},
            {"to", rules[taker].callrecordingrule_id},
            {"outcome", OutcomeToJson(rules[taker])},
            {"own_outcome", OutcomeToJson(rules[loser])}};
}

} // namespace callrecordingctl
