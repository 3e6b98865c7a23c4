// Puts calls and the rules that decide them into words.

#include "output/CallText.h"

#include <algorithm>

#include <fmt/format.h>

#include "administration/check/Reasons.h"
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

void PrintCallChanges(RuleList const& before, RuleList const& after) {
    constexpr std::size_t kMost = 20;
    Comparison const comparison = Compare(before, after);
    std::size_t shown = 0;
    for (auto const& [call, here, there] : comparison.differences)
        if (++shown <= kMost)
            fmt::print("dry run: the call {}\n  is now {}\n  would be {}\n", CallText(call),
                       DecisionText(before, here), DecisionText(after, there));
    if (shown > kMost)
        fmt::print("dry run: and a call for each of {} more pairs of rules\n", shown - kMost);
    if (comparison.same == true)
        fmt::print("dry run: no call is decided differently\n");
    if (!comparison.undecided.empty()) {
        UndecidedPair const& pair = comparison.undecided.front();
        fmt::print("dry run: whether {}calls are decided differently is undecided: {}\n",
                   comparison.same ? "further " : "",
                   WhyUndecided(pair.isWhyThere ? after : before, pair.why));
    }
}

} // namespace callrecordingctl
