// Checks patterns one by one.

#include "commands/CheckPatterns.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "calls/PartyPatterns.h"
#include "commands/HelpText.h"
#include "model/CallTypeNames.h"
#include "output/RuleText.h"
#include "output/Screen.h"
#include "text/Printable.h"
#include "validation/SidePattern.h"

namespace callrecordingctl {
namespace {

nlohmann::ordered_json PatternToJson(std::string const& pattern, CallType type,
                                     StoredPattern const& converted) {
    nlohmann::ordered_json json{{"pattern", pattern},
                                {"call_type", static_cast<int>(type)},
                                {"call_type_name", CallTypeName(type)},
                                {"malformed", converted.problem.has_value()},
                                {"stored", nullptr},
                                {"position", nullptr},
                                {"message", nullptr},
                                {"suspicion", nullptr}};
    if (converted.problem) {
        json["position"] = converted.problem->position;
        json["message"] = converted.problem->message;
    } else {
        json["stored"] = converted.stored;
        if (auto const suspicion = SuspectEntry(pattern, type))
            json["suspicion"] = suspicion->message;
    }
    return json;
}

/// Mentions what is well formed, but often or surely not meant.
void NoteOn(std::string const& pattern, CallType type, StoredPattern const& converted) {
    if (converted.problem)
        return;
    if (pattern.empty())
        return Say("note: an empty pattern is well formed, but never matches in a rule");
    if (pattern.find('\\') != std::string::npos)
        Say("{}", kEscapeNote);
    if (auto const suspicion = SuspectEntry(pattern, type))
        Say("note: {}\n{}", suspicion->message, CaretText(pattern, suspicion->position));
    if (char const* const why = WhyNoPartyMatches(converted.stored, type))
        Say("note: \"{}\" {}", pattern, why);
}

} // namespace

ExitCode CheckPatterns(std::vector<std::string> const& patterns, CallType type, bool json) {
    auto document = nlohmann::ordered_json::array();
    ExitCode result = kExitYes;
    for (std::string const& pattern : patterns) {
        StoredPattern const converted = ToStored(pattern, type);
        if (converted.problem)
            result = kExitNo;
        if (json)
            document.push_back(PatternToJson(pattern, type, converted));
        else if (converted.problem)
            PrintLines("{}\n    {}\n", CaretText(pattern, converted.problem->position),
                       converted.problem->message);
        else
            PrintLines("{}\n", converted.stored);
        NoteOn(pattern, type, converted);
    }
    if (json)
        PrintJson(document);
    return result;
}

} // namespace callrecordingctl
