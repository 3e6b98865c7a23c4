// Puts calls and the rules that decide them into words.

#include "output/CallText.h"

#include <algorithm>

#include <fmt/format.h>

#include "model/CallTypeNames.h"
#include "output/RuleText.h"
#include "output/Screen.h"
#include "output/ShellText.h"
#include "output/Table.h"
#include "text/Printable.h"
#include "validation/SidePattern.h"
#include "json/CallJson.h"

namespace callrecordingctl {
namespace {

std::string PartyText(CallParty const& party) {
    std::string const address = AddressText(party);
    std::string const shown = address.empty() ? "\"\"" : Printable(address);
    return party.type == CALL_TYPE_NUMBER ? shown
                                          : fmt::format("{} {}", CallTypeName(party.type), shown);
}

/// Whether party is the same whether or not it is asked about with a type.
bool IsPlain(CallParty const& party) {
    std::string const address = AddressTextOf(party);
    return party.type == CALL_TYPE_NUMBER && !address.empty() &&
           std::all_of(address.begin(), address.end(), [](char c) { return c >= '0' && c <= '9'; });
}

/// A pattern of addresses, and which of those that satisfy it are meant.
std::string PatternText(AddressPattern const& pattern) {
    std::string const text = Printable(SideText(pattern.pattern, pattern.type));
    return pattern.only && *pattern.only != pattern.type
               ? fmt::format("{} (of type {})", text, CallTypeName(*pattern.only))
               : text;
}

nlohmann::ordered_json ToJson(AddressPattern const& pattern) {
    nlohmann::ordered_json json{{"pattern", ToEntry(pattern.pattern, pattern.type)},
                                {"call_type", static_cast<int>(pattern.type)},
                                {"only_call_type", nullptr}};
    if (pattern.only)
        json["only_call_type"] = static_cast<int>(*pattern.only);
    return json;
}

} // namespace

char const* CallsName(CallKind calls) {
    return calls == CallKind::Typed ? "typed" : "parties";
}

std::string CallText(ExampleCall const& call) {
    return fmt::format("from {} to {}", PartyText(call.caller), PartyText(call.called));
}

std::string DecideCommand(ExampleCall const& call, CallKind calls, Context const& context) {
    bool const needsTypes =
        calls == CallKind::Typed && !(IsPlain(call.caller) && IsPlain(call.called));
    std::string command = "callrecordingctl decide";
    auto const add = [&](char const* option, CallParty const& party) {
        command += fmt::format(" {} {}", option, ShellWord(AddressTextOf(party)));
        if (needsTypes)
            command += fmt::format(" {}-type {}", option, CallTypeName(party.type));
    };
    add("--from", call.caller);
    add("--to", call.called);
    if (context.directory)
        command += " --config-dir " + ShellWord(*context.directory);
    return command;
}

nlohmann::ordered_json CallToJson(ExampleCall const& call) {
    return CallRecordingUtils::CallToJson(call.caller, call.called);
}

nlohmann::ordered_json IdsToJson(RuleList const& rules, std::vector<std::size_t> const& places) {
    auto ids = nlohmann::ordered_json::array();
    for (std::size_t const place : places)
        ids.push_back(rules[place].callrecordingrule_id);
    return ids;
}

nlohmann::ordered_json IdToJson(RuleList const& rules, std::optional<std::size_t> place) {
    return place ? nlohmann::ordered_json(rules[*place].callrecordingrule_id)
                 : nlohmann::ordered_json();
}

nlohmann::ordered_json DifferencesToJson(std::vector<Difference> const& differences,
                                         RuleList const& here, RuleList const& there) {
    auto document = nlohmann::ordered_json::array();
    for (Difference const& difference : differences)
        document.push_back({{"call", CallToJson(difference.call)},
                            {"here", IdToJson(here, difference.here)},
                            {"there", IdToJson(there, difference.there)}});
    return document;
}

std::string DecisionText(RuleList const& list, std::optional<std::size_t> place) {
    if (!place)
        return "not recorded";
    Rule const& rule = list[*place];
    if (ForbidsRecording(rule))
        return fmt::format("not recorded: rule {} says never", rule.callrecordingrule_id);
    auto const part = [](char const* name, std::string const& text) {
        return text.empty() ? "" : fmt::format(", {}{}", name, text);
    };
    return Printable(fmt::format("recorded by rule {}: type {}{}{}", rule.callrecordingrule_id,
                                 static_cast<int>(rule.call_recording_type),
                                 part("to ", rule.record_to),
                                 part("duration ", rule.recording_duration)));
}

nlohmann::ordered_json PatternsToJson(CallPatterns const& calls) {
    auto patterns = nlohmann::ordered_json::array();
    for (CallPattern const& pattern : calls.patterns)
        patterns.push_back({{"from", ToJson(pattern.caller)}, {"to", ToJson(pattern.called)}});
    return patterns;
}

nlohmann::ordered_json CallsToJson(std::vector<ExampleCall> const& calls) {
    auto json = nlohmann::ordered_json::array();
    for (ExampleCall const& call : calls)
        json.push_back(CallToJson(call));
    return json;
}

void PrintPatterns(CallPatterns const& calls) {
    for (CallPattern const& pattern : calls.patterns)
        PrintLines("  from {} to {}\n", PatternText(pattern.caller), PatternText(pattern.called));
}

} // namespace callrecordingctl
