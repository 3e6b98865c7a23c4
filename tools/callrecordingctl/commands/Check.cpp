// check: the stored form of patterns, or what is wrong with them; without any, what is wrong with
// the rule file.

#include <memory>

#include <fmt/format.h>

#include "CommandLine.h"
#include "Rules.h"
#include "check/FileFindings.h"
#include "commands/HelpText.h"
#include "commands/Registry.h"
#include "output/RuleText.h"
#include "output/Table.h"
#include "validation/SidePattern.h"

namespace callrecordingctl {
namespace {

using namespace CallRecordingUtils;

constexpr char kHelp[] =
    R"(Prints the stored form of every PATTERN, or what is wrong with it and where.
Without a PATTERN: malformed patterns of the rule file, identifiers given twice,
values out of range, and rules that can never decide because an earlier one
matches all their calls; each with the line of the file.
"callrecordingctl --help" explains the patterns.
)";

struct Options {
    std::vector<std::string> patterns;
    std::optional<CallType> type;
};

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

ExitCode CheckPatterns(Options const& options, bool json) {
    CallType const type = options.type.value_or(CALL_TYPE_NUMBER);
    auto document = nlohmann::ordered_json::array();
    ExitCode result = kExitYes;
    for (std::string const& pattern : options.patterns) {
        StoredPattern const converted = ToStored(pattern, type);
        if (converted.problem)
            result = kExitNo;
        if (json)
            document.push_back(PatternToJson(pattern, type, converted));
        else if (converted.problem)
            fmt::print("{}\n    {}\n", CaretText(pattern, *converted.problem),
                       converted.problem->message);
        else
            fmt::print("{}\n", converted.stored);
        if (pattern.empty())
            Say("note: an empty pattern is well formed, but never matches in a rule");
        if (!converted.problem && pattern.find('\\') != std::string::npos)
            Say("{}", kEscapeNote);
    }
    if (json)
        PrintJson(document);
    return result;
}

std::vector<StoredRule> ReadRules(std::string const& path) {
    if (!HasRuleFile(path))
        return {};
    try {
        return ReadStoredRules(path);
    } catch (std::exception const& error) {
        throw Failure(kExitUnreadable, error.what());
    }
}

ExitCode CheckFile(std::string const& path, bool json) {
    std::vector<StoredRule> const rules = ReadRules(path);
    std::vector<FileFinding> const findings = FindFaults(rules);
    nlohmann::ordered_json document = nlohmann::ordered_json::array();
    for (auto const& [line, position, id, message, caret] : findings) {
        document.push_back({{"line", line},
                            {"position", position},
                            {"callrecordingrule_id", id},
                            {"message", message}});
        if (!json)
            fmt::print("{}:{}: rule {}: {}{}\n", path, line, id, message, caret);
    }
    if (json)
        PrintJson(document);
    else if (findings.empty())
        fmt::print("{} {}, nothing found\n", rules.size(), rules.size() == 1 ? "rule" : "rules");
    return findings.empty() ? kExitYes : kExitNo;
}

} // namespace

void AddCheck(CommandLine& line) {
    auto const options = std::make_shared<Options>();
    CLI::App& check = line.AddCommand(
        "check", "Check patterns, or without any the whole rule file", kHelp,
        [options](Context const& context) {
            return options->patterns.empty() ? CheckFile(context.path, context.json)
                                             : CheckPatterns(*options, context.json);
        });
    AddText(check, "PATTERN...", "", "Patterns as they would be given to add",
            [options](std::string const& text) { options->patterns.push_back(text); })
        ->expected(0, 1); // For the help: all patterns are left over.
    TakeRest(line, check, options->patterns);
    AddCallType(check, "--type", "Their call type (default: number)", options->type);
}

} // namespace callrecordingctl
