/// @file
/// check with patterns: their stored form, or what is wrong with them.

#include "Commands.h"

#include <fmt/format.h>

#include "HelpText.h"
#include "RuleText.h"
#include "Table.h"
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
                                {"message", nullptr}};
    if (converted.problem) {
        json["position"] = converted.problem->position;
        json["message"] = converted.problem->message;
    } else {
        json["stored"] = converted.stored;
    }
    return json;
}

} // namespace

ExitCode CheckPatterns(std::vector<std::string> const& patterns, CallType type, bool json) {
    auto document = nlohmann::ordered_json::array();
    ExitCode result = EXIT_CODE_YES;
    for (std::string const& pattern : patterns) {
        StoredPattern const converted = ToStored(pattern, type);
        if (converted.problem)
            result = EXIT_CODE_NO;
        if (json)
            document.push_back(PatternToJson(pattern, type, converted));
        else if (converted.problem)
            fmt::print("{}\n    {}\n", CaretText(pattern, *converted.problem),
                       converted.problem->message);
        else
            fmt::print("{}\n", converted.stored);
        if (pattern.empty())
            Say("note: an empty pattern is well formed, but never matches in a rule\n");
        if (!converted.problem && pattern.find('\\') != std::string::npos)
            Say("{}\n", ESCAPE_NOTE);
    }
    if (json)
        PrintJson(document);
    return result;
}

} // namespace callrecordingctl
