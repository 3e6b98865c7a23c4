// check: the stored form of patterns, or what is wrong with them; without any, what is wrong with
// the rule file.

#include <memory>

#include <fmt/format.h>

#include "CommandLine.h"
#include "Rules.h"
#include "analysis/RuleAnalysis.h"
#include "check/FileFindings.h"
#include "commands/AnalysisOptions.h"
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
values out of range, and rules that can never decide, because nothing satisfies
a side or because earlier rules together take all their calls; each with the
line of the file. That earlier rules take some calls of a rule is usual, and
only a note, of a hundred of them at most. Exit status: 0 nothing but notes, 1
something found, 6 undecided.
"callrecordingctl --help" explains the patterns.
)";

struct Options {
    std::vector<std::string> patterns;
    std::optional<CallType> type;
    std::size_t memory = kAnalysisMemory;
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

nlohmann::ordered_json FindingToJson(FileFinding const& finding,
                                     std::vector<StoredRule> const& rules) {
    auto takers = nlohmann::ordered_json::array();
    for (std::size_t const place : finding.takenBy)
        takers.push_back(rules[place].rule.callrecordingrule_id);
    return {{"line", finding.line},
            {"position", finding.position},
            {"callrecordingrule_id", finding.id},
            {"kind", finding.kind},
            {"message", finding.message},
            {"taken_by", takers}};
}

/// Faults count first, then what could not be said; usual things are notes.
ExitCode CodeOf(std::vector<FileFinding> const& findings) {
    ExitCode code = kExitYes;
    for (FileFinding const& finding : findings)
        if (!IsNote(finding))
            return kExitNo;
        else if (finding.kind == kUndecided)
            code = kExitUndecided;
    return code;
}

ExitCode CheckFile(std::string const& path, std::size_t memory, bool json) {
    std::vector<StoredRule> const rules = ReadRules(path);
    std::vector<FileFinding> const findings = FindFaults(rules, memory);
    auto document = nlohmann::ordered_json::array();
    for (FileFinding const& finding : findings) {
        document.push_back(FindingToJson(finding, rules));
        if (!json)
            fmt::print("{}:{}: {}rule {}: {}{}\n", path, finding.line,
                       IsNote(finding) ? "note: " : "", finding.id, finding.message, finding.caret);
    }
    ExitCode const code = CodeOf(findings);
    if (json)
        PrintJson(document);
    else if (code == kExitYes)
        fmt::print("{} {}, nothing found{}\n", rules.size(), rules.size() == 1 ? "rule" : "rules",
                   findings.empty() ? "" : " but the notes above");
    return code;
}

} // namespace

void AddCheck(CommandLine& line) {
    auto const options = std::make_shared<Options>();
    CLI::App& check = line.AddCommand(
        "check", "Check patterns, or without any the whole rule file", kHelp,
        [options](Context const& context) {
            return options->patterns.empty()
                       ? CheckFile(context.path, options->memory, context.json)
                       : CheckPatterns(*options, context.json);
        });
    AddText(check, "PATTERN...", "", "Patterns as they would be given to add",
            [options](std::string const& text) { options->patterns.push_back(text); })
        ->expected(0, 1); // For the help: all patterns are left over.
    TakeRest(line, check, options->patterns);
    AddCallType(check, "--type", "Their call type (default: number)", options->type);
    AddMemory(check, options->memory);
}

} // namespace callrecordingctl
