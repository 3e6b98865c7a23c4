// check: the stored form of patterns, or what is wrong with them; without any, what is wrong with
// the rule file.

#include <filesystem>
#include <memory>

#include <fmt/format.h>

#include "CommandLine.h"
#include "Rules.h"
#include "administration/check/FileFindings.h"
#include "administration/inspection/ReadRules.h"
#include "analysis/RuleAnalysis.h"
#include "commands/AnalysisOptions.h"
#include "commands/HelpText.h"
#include "commands/Registry.h"
#include "common/MemoryFile.h"
#include "model/CallTypeNames.h"
#include "output/RuleText.h"
#include "output/Table.h"
#include "text/Printable.h"
#include "validation/SidePattern.h"

namespace callrecordingctl {
namespace {

constexpr char kHelp[] =
    R"(Prints the stored form of every PATTERN, or what is wrong with it and where.
Without a PATTERN: malformed patterns of the rule file, identifiers given twice,
values out of range, and rules that can never decide, because nothing satisfies
a side or because earlier rules together take all their calls; each with the
line of the file. That earlier rules take some calls of a rule is usual, and
only a note, of a hundred of them at most. An argument that is the name of a
file, or "-" for standard input, has that file checked; with --type it is a
pattern all the same. Exit status: 0 nothing but notes, 1 something found, 6
undecided.
"callrecordingctl --help" explains the patterns.
)";

struct Options {
    std::vector<std::string> patterns;
    std::optional<CallType> type;
    AnalysisOptions analysis;
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
            fmt::print("{}\n    {}\n", CaretText(pattern, converted.problem->position),
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

std::vector<StoredRule> ReadChecked(std::string const& path, std::string const& name) {
    try {
        return ReadStoredRules(path);
    } catch (std::exception const& error) {
        std::string message = error.what();
        if (message.compare(0, path.size(), path) == 0)
            message.replace(0, path.size(), name);
        throw Failure(kExitUnreadable, message);
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

/// Checks the rule file at path, which messages call name.
ExitCode CheckFile(std::string const& path, std::string const& name, std::size_t memory,
                   bool json) {
    std::vector<StoredRule> const rules = ReadChecked(path, name);
    std::vector<FileFinding> const findings = FindFaults(rules, memory);
    auto document = nlohmann::ordered_json::array();
    for (FileFinding const& finding : findings) {
        document.push_back(FindingToJson(finding, rules));
        if (!json)
            fmt::print("{}:{}: {}rule {}: {}{}\n", name, finding.line,
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

/// A file that is not installed: what names one, and is not said to be a pattern by --type.
bool NamesFile(Options const& options) {
    if (options.patterns.size() != 1 || options.type)
        return false;
    std::error_code ignored;
    return options.patterns[0] == "-" ||
           std::filesystem::is_regular_file(options.patterns[0], ignored);
}

ExitCode Check(Context const& context, Options const& options) {
    if (options.patterns.empty()) {
        HasRuleFile(context.path); // Says what is missing where there is no place for it.
        return CheckFile(context.path, context.path, options.analysis.memory, context.json);
    }
    if (!NamesFile(options))
        return CheckPatterns(options, context.json);
    std::string const& file = options.patterns[0];
    MemoryFile const copy(ReadInput(file));
    return CheckFile(copy.Path(), file == "-" ? "standard input" : file, options.analysis.memory,
                     context.json);
}

} // namespace

void AddCheck(CommandLine& line) {
    auto const options = std::make_shared<Options>();
    CLI::App& check = line.AddCommand(
        "check", "Check patterns, or a rule file", kHelp,
        [options](Context const& context) { return Check(context, *options); });
    AddText(check, "PATTERN...", "", "Patterns as they would be given to add",
            [options](std::string const& text) { options->patterns.push_back(text); })
        ->expected(0, 1); // For the help: all patterns are left over.
    TakeRest(line, check, options->patterns);
    AddCallType(check, "--type", "Their call type (default: number)", options->type);
    AddAnalysis(check, options->analysis);
}

} // namespace callrecordingctl
