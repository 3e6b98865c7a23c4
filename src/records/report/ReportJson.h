// What a replay counted, as JSON. docs/replay.md lists its names.

#ifndef RECORDS_REPORT_REPORTJSON_H
#define RECORDS_REPORT_REPORTJSON_H

#include <optional>
#include <string>

#include <nlohmann/json.hpp>

#include "records/counting/Replay.h"
#include "records/report/ReplayFacts.h"

namespace CallRecordingUtils {

nlohmann::ordered_json ToJson(ReplayReport const& report, ReplayFacts const& facts);

/// A part of ToJson; null without an example.
nlohmann::ordered_json ExampleToJson(std::optional<Example> const& example);

/// What the rule of this decision does with a call; null when no rule takes it.
nlohmann::ordered_json DecisionToJson(RuleList const& rules, Decision decision);

/// The part of ToJson about calls that the other rules decide differently.
nlohmann::ordered_json DifferencesToJson(ReplayReport const& report, RuleList const& here,
                                         RuleList const& there);

/// The part of ToJson about lines that could not be read.
nlohmann::ordered_json UnreadableToJson(ReplayReport const& report);

/// How the calls were asked about: "parties 12, typed 3, one side typed 1", without zeros.
std::string QuestionsText(ReplayReport const& report);

/// The share of calls of all, from 0 to 1.
double Share(std::uint64_t calls, std::uint64_t all);

/// The same for people: "12.5 %", and "<0.1 %" for what would otherwise read as 0.0 %.
std::string Percent(std::uint64_t calls, std::uint64_t all);

} // namespace CallRecordingUtils

#endif
