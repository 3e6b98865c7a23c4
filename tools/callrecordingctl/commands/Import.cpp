// import: adds the rules of a file, or replaces all rules by them; all or none.

#include <algorithm>
#include <memory>
#include <set>
#include <tuple>

#include <fmt/format.h>

#include "administration/exchange/ImportedRules.h"
#include "administration/inspection/ReadRules.h"
#include "commands/RuleFields.h"
#include "commands/RunEdit.h"
#include "output/RuleText.h"
#include "text/Printable.h"
#include "validation/SidePattern.h"

namespace callrecordingctl {
namespace {

constexpr char kHelp[] =
    R"(FILE is what "list --json" or "export" prints, another rule file, or a table
with the separator , or ; whose first row names the columns: from, from_type,
to, to_type, record_to, duration, description, recording_type, enabled, id.
"-" is standard input. Columns mean what the options of add mean and may be left
out. Everything is checked first, and each fault is printed with its line. Then
all rules are saved at once: after the others, under new identifiers, or with
--replace instead of all others. Rules that are there already keep their lines
of the file. With --replace a rule file is taken byte for byte.
)";

struct Options {
    std::string file;
    bool replace = false;
    bool everyone = false;
};

std::string FileName(Options const& options) {
    return options.file == "-" ? "standard input" : options.file;
}

/// Adds the faults that only all rules together show, or the lack of --everyone.
void CheckRules(ImportFile& file, Options const& options) {
    std::set<std::int32_t> ids;
    for (ImportedRule& imported : file.rules) {
        std::int32_t const id = imported.rule.callrecordingrule_id;
        if (imported.hasId && !ids.insert(id).second && !imported.isPresent)
            imported.faults.push_back(
                {imported.line, fmt::format("the identifier {} is given twice", id)});
        if (IsForEveryone(imported.rule) && !options.everyone && !imported.isPresent &&
            imported.faults.empty())
            imported.faults.push_back({imported.line,
                                       "this rule would record every call; give "
                                       "from or to, or --everyone if you want that"});
    }
}

/// Throws a Failure with all faults, in the order of their lines.
void RequireFaultless(ImportFile const& file, Options const& options) {
    std::vector<ImportFault> faults = file.faults;
    for (ImportedRule const& rule : file.rules)
        faults.insert(faults.end(), rule.faults.begin(), rule.faults.end());
    if (faults.empty())
        return;
    std::stable_sort(faults.begin(), faults.end(),
                     [](ImportFault const& a, ImportFault const& b) { return a.line < b.line; });
    std::string message;
    for (auto const& [line, text] : faults)
        message += fmt::format("{}:{}: {}\n", FileName(options), line, text);
    throw Failure(kExitNo, fmt::format("{}{} {}; nothing was imported", message, faults.size(),
                                       faults.size() == 1 ? "fault" : "faults"));
}

/// Notes patterns of new rules that are well formed but suspicious.
void NoteSuspicions(ImportFile const& file, Options const& options) {
    for (ImportedRule const& imported : file.rules) {
        if (imported.isPresent)
            continue;
        Rule const& rule = imported.rule;
        for (auto const& [side, pattern, type] :
             {std::tuple("from", rule.caller_pattern, rule.caller_call_type),
              std::tuple("to", rule.called_pattern, rule.called_call_type)})
            if (auto const suspicion = SuspectStored(pattern, type))
                Say("{}:{}: {}: note: {}\n{}", FileName(options), imported.line, side,
                    suspicion->message, CaretText(ToEntry(pattern, type), suspicion->position));
    }
}

ExitCode Import(RuleEdit& edit, Options const& options) {
    ImportFile file = ReadImport(ReadInput(options.file), FileName(options));
    bool const replacesMalformed = options.replace && edit.Malformation();
    RuleList const before = replacesMalformed ? RuleList() : edit.Before();
    if (options.replace)
        KeepPresent(before, file);
    CheckRules(file, options);
    RequireFaultless(file, options);
    NoteSuspicions(file, options);
    // A file without rules is more likely what a failed command printed than the wish to have none.
    if (file.rules.empty())
        throw Failure(kExitNo, FileName(options) + ": holds no rules; nothing was imported");
    if (options.replace && file.format == ImportFormat::RuleFile)
        edit.ReplaceText(file.text);
    else
        edit.Replace(RulesAfter(before, file.rules, options.replace));
    return kExitYes;
}

} // namespace

void AddImport(CommandLine& line) {
    auto const options = std::make_shared<Options>();
    CLI::App& import = AddEdit(line, "import", "Take rules from a table or another machine", kHelp,
                               options, Import);
    import.add_option("FILE", options->file, "JSON, comma-separated values, or a rule file")
        ->type_name("")
        ->required();
    import.add_flag("--replace", options->replace, "Replace all rules that there are");
    AddEveryone(import, options->everyone);
}

} // namespace callrecordingctl
