// Puts calls and the rules that decide them into words.

#include "output/CallText.h"

#include <algorithm>

#include <fmt/format.h>

#include "model/CallTypeNames.h"
#include "output/RuleText.h"
#include "output/Table.h"
#include "text/Printable.h"
#include "json/CallJson.h"

namespace callrecordingctl {
namespace {

std::string PartyText(CallParty const& party) {
    std::string const address = AddressText(party);
    std::string const shown = address.empty() ? "\"\"" : Printable(address);
    return party.type == CALL_TYPE_NUMBER ? shown
                                          : fmt::format("{} {}", CallTypeName(party.type), shown);
}

} // namespace

std::string CallText(ExampleCall const& call) {
    return fmt::format("from {} to {}", PartyText(call.caller), PartyText(call.called));
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
    auto const part = [](char const* name, std::string const& text) {
        return text.empty() ? "" : fmt::format(", {}{}", name, text);
    };
    return Printable(fmt::format("recorded by rule {}: type {}{}{}", rule.callrecordingrule_id,
                                 static_cast<int>(rule.call_recording_type),
                                 part("to ", rule.record_to),
                                 part("duration ", rule.recording_duration)));
}

} // namespace callrecordingctl
