// Puts a decided call on a line.

#include "records/report/EachCall.h"

#include <fmt/format.h>

#include "text/CopyField.h"
#include "json/CallJson.h"
#include "json/Names.h"
#include "json/RuleJson.h"

namespace CallRecordingUtils {
namespace {

using nlohmann::ordered_json;

/// A value of a record, which is empty where the record has none.
std::string FieldOf(std::string const& value) {
    return value.empty() ? kNoCopyField : CopyField(value);
}

/// The identifier of the rule, and what becomes of the call.
std::string OutcomeFields(RuleList const& rules, Decision decision) {
    if (decision == kNoRule)
        return fmt::format("\t{}\tnot recorded", kNoCopyField);
    Rule const& rule = rules[decision];
    return fmt::format("\t{}\t{}", rule.callrecordingrule_id,
                       ForbidsRecording(rule) ? "forbidden" : CopyField(rule.record_to));
}

ordered_json OutcomeToJson(RuleList const& rules, Decision decision) {
    return {{"recorded", decision != kNoRule && !ForbidsRecording(rules[decision])},
            {"rule", decision == kNoRule
                         ? ordered_json()
                         : CallRecordingUtils::OutcomeToJson(rules[decision], decision + 1)}};
}

} // namespace

std::string EachCall::Begin(CallRecord const& record) const {
    std::string line;
    if (key_)
        line = FieldOf(*key_ < record.wanted.size() ? record.wanted[*key_] : std::string()) + "\t";
    return line + (record.time ? TimeText(*record.time) : kNoCopyField);
}

std::string EachCall::Text(DecidedCall const& call) const {
    std::string line = fmt::format(
        "{}\t{}\t{}{}", Begin(call.record), FieldOf(call.record.values[kColumnFrom]),
        FieldOf(call.record.values[kColumnTo]), OutcomeFields(facts_.here.rules, call.decision));
    if (facts_.there)
        line += OutcomeFields(facts_.there->rules, *call.other);
    return line;
}

std::string EachCall::Text(CallRecord const& unreadable) const {
    return fmt::format("{0}\t{1}\t{1}\t{1}\tunreadable: {2}{3}", Begin(unreadable), kNoCopyField,
                       CopyField(unreadable.problem), facts_.there ? "\t\\N\t\\N" : "");
}

void EachCall::AddKey(ordered_json& json, CallRecord const& record) const {
    if (key_)
        json["key"] =
            *key_ < record.wanted.size() ? ordered_json(record.wanted[*key_]) : ordered_json();
}

ordered_json EachCall::Json(DecidedCall const& call) const {
    CallRecord const& record = call.record;
    ordered_json json;
    AddKey(json, record);
    json["file"] = call.file;
    json["line"] = record.line;
    json["time"] = record.time ? ordered_json(TimeText(*record.time)) : ordered_json();
    json["read"] = {{kCallFrom, record.values[kColumnFrom]}, {kCallTo, record.values[kColumnTo]}};
    json[kCallFrom] = ToJson(call.from);
    json[kCallTo] = ToJson(call.to);
    json.update(OutcomeToJson(facts_.here.rules, call.decision));
    if (facts_.there)
        json["there"] = OutcomeToJson(facts_.there->rules, *call.other);
    return json;
}

ordered_json EachCall::Json(CallRecord const& unreadable, std::string const& file) const {
    ordered_json json;
    AddKey(json, unreadable);
    json["file"] = file;
    json["line"] = unreadable.line;
    json["unreadable"] = unreadable.problem;
    return json;
}

} // namespace CallRecordingUtils
