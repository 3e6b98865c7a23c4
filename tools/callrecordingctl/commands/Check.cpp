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
#include "commands/AnalysisOptions.h"
#include "commands/CheckPatterns.h"
#include "commands/DropNeedless.h"
#include "commands/RunEdit.h"
#include "common/MemoryFile.h"
#include "output/Certificate.h"
#include "output/FindingText.h"
#include "output/Progress.h"
#include "output/RuleText.h"
#include "text/Printable.h"

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

/// Which of the rules that take calls of another one are worth a search: all that a note shows, or
/// one, where notes are only counted.
std::size_t MostTakers(std::size_t rules, bool areNotesShown) {
    constexpr std::size_t kManyRules = 20000;
    return !areNotesShown ? 1 : rules < kManyRules ? 100 : 8;
}

std::vector<FileFinding> Find(std::vector<StoredRule> const& stored, Options const& options,
                              bool json) {
    CheckOptions check = options.check;
    check.mostTakers = MostTakers(stored.size(), options.notes || json);
    std::optional<Progress> progress;
    check.onProgress = [&progress](std::size_t done, std::size_t all) {
        if (!progress)
            progress.emplace(all);
        if (progress->IsDue())
            progress->Show(done, fmt::format("{} % of the rules checked", 100 * done / all));
    };
    return FindFaults(stored, check);
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
    std::vector<FileFinding> const findings = Find(stored, options, json);
    if (json) {
        auto document = nlohmann::ordered_json::array();
        for (FileFinding const& finding : findings)
            document.push_back(FindingToJson(finding, rules));
        PrintJson(document);
    } else if (!options.quiet) {
        PrintFindings(findings, rules, name, options.notes);
        PrintSummary(findings, rules, options.check.calls, options.notes);
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

ExitCode Fix(Context const& context, Options const& options) {
    if (!options.patterns.empty())
        throw Failure(kExitUsage, "check: --fix is about the rule file; give no PATTERN");
    return RunEdit(context, options.edit,
                   [&](RuleEdit& edit) { return DropNeedless(edit, options.check, context.json); });
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
        return CheckPatterns(options.patterns, options.type.value_or(CALL_TYPE_NUMBER),
                             context.json);
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
    AddGuards(check, options.edit, fix);
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
