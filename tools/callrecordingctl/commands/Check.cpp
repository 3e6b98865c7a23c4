// check: the stored form of patterns, or what is wrong with them; without any, what is wrong with
// the rule file.

#include <algorithm>
#include <filesystem>
#include <memory>

#include <fmt/format.h>

#include "CommandLine.h"
#include "Rules.h"
#include "administration/check/FileFindings.h"
#include "administration/inspection/Digest.h"
#include "administration/inspection/ReadRules.h"
#include "administration/inspection/RuleNames.h"
#include "analysis/RuleAnalysis.h"
#include "calls/PartyPatterns.h"
#include "commands/AnalysisOptions.h"
#include "commands/HelpText.h"
#include "commands/RunEdit.h"
#include "common/MemoryFile.h"
#include "model/CallTypeNames.h"
#include "output/CallText.h"
#include "output/Certificate.h"
#include "output/LossText.h"
#include "output/RuleText.h"
#include "output/Table.h"
#include "text/Printable.h"
#include "validation/SidePattern.h"

namespace callrecordingctl {
namespace {

constexpr char kHelp[] =
    R"(Prints the stored form of every PATTERN, or what is wrong with it and where.
Without a PATTERN, checks the rule file: malformed patterns, identifiers given
twice, values out of range, and rules that never decide, each with its line. Of
a rule that never decides it says what takes its calls: rules that do the same,
or something else, a wider rule in front, or a rule that says never. Notes are
about what is no fault: earlier rules take some calls of a rule, as is usual, a
rule could go without any call changing, no party of a call can match a pattern,
or it is otherwise with the other kind of calls. An argument that is the name of
a file, or "-" for standard input, has that file checked. A PATTERN with a "/"
needs --type, so that it cannot be a file that is missing.
--fix deletes the rules that can go, in one edit, after it has proved that no
call of either kind is decided differently.
Exit status: 0 nothing but notes, 1 something found, 6 undecided; with --fix as
for other edits, 1 if no rule can go, 6 if it cannot be proved.
"callrecordingctl --help" explains the patterns.
)";

struct Options {
    std::vector<std::string> patterns;
    std::optional<CallType> type;
    bool notes = false;
    bool quiet = false;
    bool fix = false;
    std::optional<std::string> certificate; // Its file.
    EditOptions edit;                       // Of --fix.
    CheckOptions check;
};

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
        NoteOn(pattern, type, converted);
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

nlohmann::ordered_json FindingToJson(FileFinding const& finding, RuleList const& rules) {
    nlohmann::ordered_json json{{"line", finding.line},
                                {"position", finding.position},
                                {"callrecordingrule_id", finding.id},
                                {"kind", finding.kind},
                                {"message", finding.message},
                                {"taken_by", IdsToJson(rules, finding.takenBy)},
                                {"taken_by_complete", finding.isTakenByComplete},
                                {"loses", nullptr}};
    if (finding.loss)
        json["loses"] =
            LossToJson(rules, finding.position - 1, finding.loss->taker, finding.loss->call);
    return json;
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

std::size_t CountNotes(std::vector<FileFinding> const& findings) {
    return static_cast<std::size_t>(std::count_if(findings.begin(), findings.end(), IsNote));
}

void Print(std::vector<FileFinding> const& findings, RuleList const& rules, std::string const& name,
           bool withNotes) {
    for (FileFinding const& finding : findings) {
        if (IsNote(finding) && !withNotes)
            continue;
        fmt::print("{}:{}: {}rule {}: {}{}\n", name, finding.line, IsNote(finding) ? "note: " : "",
                   finding.id, finding.message, finding.caret);
        if (finding.loss)
            fmt::print("    {}\n", LossText(rules, finding.position - 1, finding.loss->taker,
                                            finding.loss->call));
    }
}

void PrintSummary(std::vector<FileFinding> const& findings, RuleList const& rules,
                  Options const& options) {
    std::size_t const notes = CountNotes(findings);
    std::size_t const others = static_cast<std::size_t>(std::count_if(
        findings.begin(), findings.end(), [](auto const& f) { return f.kind == kOtherCalls; }));
    fmt::print("{} {}, ", rules.size(), rules.size() == 1 ? "rule" : "rules");
    if (notes == findings.size())
        fmt::print("nothing found");
    else
        fmt::print("{} found", findings.size() - notes);
    if (notes > 0)
        fmt::print(", {} {}{}", notes, notes == 1 ? "note" : "notes",
                   options.notes ? "" : " (--notes shows them)");
    fmt::print("\n");
    if (others > 0)
        fmt::print("with --calls {} it is otherwise for {} {}\n",
                   CallsName(OtherThan(options.check.calls)), others,
                   others == 1 ? "rule" : "rules");
}

/// Writes which rules never decide. REQUIRES: findings are those of the file at path.
void Certify(std::string const& path, std::vector<FileFinding> const& findings,
             Options const& options) {
    nlohmann::ordered_json const hidden = HiddenToJson(findings);
    if (hidden.empty())
        return Say("{}: not written, since no rule is proved never to decide",
                   *options.certificate);
    nlohmann::ordered_json certificate =
        EmptyCertificate(DigestOf(ReadInput(path)), options.check.calls);
    certificate["hidden"] = hidden;
    WriteCertificate(*options.certificate, certificate);
}

/// Checks the rule file at path, which messages call name.
ExitCode CheckFile(std::string const& path, std::string const& name, Options const& options,
                   bool json) {
    std::vector<StoredRule> const stored = ReadChecked(path, name);
    RuleList rules;
    for (StoredRule const& rule : stored)
        rules.push_back(rule.rule);
    std::vector<FileFinding> const findings = FindFaults(stored, options.check);
    if (json) {
        auto document = nlohmann::ordered_json::array();
        for (FileFinding const& finding : findings)
            document.push_back(FindingToJson(finding, rules));
        PrintJson(document);
    } else if (!options.quiet) {
        Print(findings, rules, name, options.notes);
        PrintSummary(findings, rules, options);
    }
    if (options.certificate)
        Certify(path, findings, options);
    return CodeOf(findings);
}

/// A file that is not installed: what names one, and is not said to be a pattern by --type.
bool NamesFile(Options const& options) {
    if (options.patterns.size() != 1 || options.type)
        return false;
    std::error_code ignored;
    return options.patterns[0] == "-" ||
           std::filesystem::is_regular_file(options.patterns[0], ignored);
}

/// A "/" is seldom part of a number or an address, and a file that is missing is no pattern.
void RefuseMissingFile(Options const& options) {
    for (std::string const& pattern : options.patterns)
        if (!options.type && pattern.find('/') != std::string::npos)
            throw Failure(kExitUsage,
                          fmt::format("{}: {}; give --type if it is a pattern", Printable(pattern),
                                      options.patterns.size() == 1
                                          ? "there is no such file"
                                          : "a file is checked by itself"));
}

/// Deletes the rules that can go for both kinds of calls.
ExitCode DropNeedless(RuleEdit& edit, Options const& options, bool json) {
    RuleList const rules = edit.Before();
    auto const find = [&](CallKind calls) {
        return RuleAnalysis(rules, options.check.memory, calls).FindCleanUp().drops;
    };
    std::vector<CleanUp::Dropped> const others = find(OtherThan(options.check.calls));
    RuleList after = rules;
    std::vector<CleanUp::Dropped> drops;
    for (CleanUp::Dropped const& drop : find(options.check.calls))
        if (std::any_of(others.begin(), others.end(),
                        [&](CleanUp::Dropped const& other) { return other.rule == drop.rule; }))
            drops.push_back(drop);
    for (auto drop = drops.rbegin(); drop != drops.rend(); ++drop)
        after.erase(after.begin() + static_cast<std::ptrdiff_t>(drop->rule));
    for (CallKind const calls : {CallKind::Typed, CallKind::Parties})
        if (Compare(rules, after, options.check.memory, calls).same != true)
            throw Failure(kExitUndecided, "it cannot be proved that no call would be decided "
                                          "differently; nothing was changed");
    for (auto drop = drops.rbegin(); drop != drops.rend(); ++drop)
        edit.Delete(drop->rule);
    for (CleanUp::Dropped const& drop : drops)
        if (!json)
            fmt::print("rule {} can go: {}\n", rules[drop.rule].callrecordingrule_id,
                       drop.insteadOf.empty()
                           ? "no call is decided differently without it"
                           : fmt::format("{} {} the same with the calls that it matches or decides",
                                         RulesText(rules, drop.insteadOf),
                                         drop.insteadOf.size() == 1 ? "does" : "do"));
    if (drops.empty() && !json)
        fmt::print("no rule can go\n");
    return drops.empty() ? kExitNo : kExitYes;
}

ExitCode Fix(Context const& context, Options const& options) {
    if (!options.patterns.empty())
        throw Failure(kExitUsage, "check: --fix is about the rule file; give no PATTERN");
    return RunEdit(context, options.edit,
                   [&](RuleEdit& edit) { return DropNeedless(edit, options, context.json); });
}

ExitCode Check(Context const& context, Options const& options) {
    if (options.fix)
        return Fix(context, options);
    if (options.patterns.empty()) {
        HasRuleFile(context.path); // Says what is missing where there is no place for it.
        return CheckFile(context.path, context.path, options, context.json);
    }
    if (!NamesFile(options)) {
        RefuseMissingFile(options);
        return CheckPatterns(options, context.json);
    }
    std::string const& file = options.patterns[0];
    MemoryFile const copy(ReadInput(file));
    return CheckFile(copy.Path(), file == "-" ? "standard input" : file, options, context.json);
}

/// Adds the options that say what is printed of a file, and --fix.
void AddFileOptions(CLI::App& check, Options& options) {
    CLI::Option* const notes = check.add_flag("--notes", options.notes, "Show the notes as well");
    check.add_flag("--quiet", options.quiet, "Print nothing about a file; the exit status tells")
        ->excludes(notes);
    CLI::Option* const certificate = AddText(
        check, "--certificate", "FILE",
        "Write which rules of the file never decide to\na new file, for examples/check_proof.py",
        [&options](std::string const& text) { options.certificate = text; });
    CLI::Option* const fix = check.add_flag("--fix", options.fix,
                                            "Delete the rules that can go without any call\n"
                                            "being decided differently");
    check.add_flag("--dry-run", options.edit.dryRun, "With --fix: only say what would be deleted")
        ->needs(fix);
    fix->excludes(certificate);
}

} // namespace

void AddCheck(CommandLine& line) {
    auto const options = std::make_shared<Options>();
    CLI::App& check =
        line.AddCommand("check", "Check patterns, or a rule file", kHelp, options, Check);
    AddText(check, "PATTERN...", "", "Patterns as they would be given to add",
            [options](std::string const& text) { options->patterns.push_back(text); })
        ->expected(0, 1); // For the help: all patterns are left over.
    TakeRest(line, check, options->patterns);
    AddCallType(check, "--type", "Their call type (default: number)", options->type);
    AddFileOptions(check, *options);
    AddAnalysis(check, options->check.calls, options->check.memory);
}

} // namespace callrecordingctl
