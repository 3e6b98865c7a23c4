// import: adds the rules of a file, or replaces all rules by them; all or none.

#include <algorithm>
#include <memory>
#include <set>

#include <fmt/format.h>

#include "administration/exchange/ImportedRules.h"
#include "administration/inspection/ReadRules.h"
#include "administration/inspection/RuleNames.h"
#include "commands/RuleFields.h"
#include "commands/RunEdit.h"
#include "output/RuleText.h"

namespace callrecordingctl {
namespace {

constexpr char kHelp[] =
    R"(FILE is what "list --json" or "export" prints, another rule file, or a table
with the separator , or ; whose first row names the columns: from, from_type,
to, to_type, record_to, duration, description, recording_type, enabled, id.
"-" is standard input. Columns mean what the options of add mean and may be left
out; what LibreOffice and Excel save as text is understood, in UTF-8 or UTF-16.
Everything is checked first, and each fault is printed with its line. Then all
rules are saved at once: after the others, under new identifiers, or with
--replace instead of all others. A rule that exists already, apart from its
identifier and whether it is on, is not added again. With --replace, rules that
exist keep their lines of the file, and a rule file is taken byte for byte.
Example: callrecordingctl import desks.csv --column from=Extension --dry-run
)";

struct Options {
    std::string file;
    RenamedColumns columns;
    bool replace = false;
    bool again = false;
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
            imported.faults.push_back(
                {imported.line, fmt::format("this rule would record {}; give from or to, or "
                                            "--everyone if you want that",
                                            EveryoneText(imported.rule))});
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

/// Takes the rules out of file that exist already.
std::vector<ImportedRule> TakeSame(RuleList const& before, ImportFile& file) {
    FindSame(before, file);
    auto const isNew = [](ImportedRule const& imported) { return !imported.same; };
    auto const same = std::stable_partition(file.rules.begin(), file.rules.end(), isNew);
    std::vector<ImportedRule> const taken(same, file.rules.end());
    file.rules.erase(same, file.rules.end());
    return taken;
}

void NameSame(RuleList const& before, std::vector<ImportedRule> const& same,
              Options const& options) {
    constexpr std::size_t kMost = 10;
    for (std::size_t i = 0; i < std::min(same.size(), kMost); ++i)
        Say("{}:{}: exists already as {}", FileName(options), same[i].line,
            NameOf(before[*same[i].same]));
    if (same.size() > kMost)
        Say("and {} more of {} exist already", same.size() - kMost, FileName(options));
    if (!same.empty())
        Say("what exists already is not added; --again adds it once more");
}

ExitCode Import(RuleEdit& edit, Options const& options) {
    ImportFile file = ReadImport(ReadInput(options.file), FileName(options), options.columns);
    for (auto const& [line, text] : file.notes)
        Say("{}:{}: note: {}", FileName(options), line, text);
    bool const replacesMalformed = options.replace && edit.Malformation();
    RuleList const before = replacesMalformed ? RuleList() : edit.Before();
    std::vector<ImportedRule> same;
    if (options.replace)
        KeepPresent(before, file);
    else if (!options.again)
        same = TakeSame(before, file);
    CheckRules(file, options);
    RequireFaultless(file, options);
    for (ImportedRule const& imported : file.rules)
        if (!imported.isPresent)
            NoteSuspicions(imported.rule, fmt::format("{}:{}", FileName(options), imported.line));
    // A file without rules is more likely what a failed command printed than the wish to have none.
    if (file.rules.empty() && same.empty())
        throw Failure(kExitNo, FileName(options) + ": holds no rules; nothing was imported");
    NameSame(before, same, options);
    if (file.rules.empty())
        return kExitNo;
    if (options.replace && file.format == ImportFormat::RuleFile)
        edit.ReplaceText(file.text);
    else
        edit.Replace(RulesAfter(before, file.rules, options.replace));
    return kExitYes;
}

constexpr char kColumn[] = "--column";

/// Reads FIELD=NAME.
RenamedColumns::value_type ParseColumn(std::string const& text) {
    std::size_t const equals = text.find('=');
    if (equals == std::string::npos || equals + 1 == text.size())
        throw CLI::ValidationError(
            kColumn, fmt::format("\"{}\" is not FIELD=NAME, as in from=Extension", text));
    std::string const field = text.substr(0, equals);
    RuleColumn const* const column = ColumnOf(field);
    if (column == nullptr)
        throw CLI::ValidationError(
            kColumn, fmt::format("\"{}\" is no field; there are {}", field, FieldNames()));
    return {column, text.substr(equals + 1)};
}

void AddColumn(CLI::App& import, RenamedColumns& columns) {
    import
        .add_option_function<std::vector<std::string>>(
            kColumn,
            [&columns](std::vector<std::string> const& texts) {
                for (std::string const& text : texts)
                    columns.push_back(ParseColumn(text));
},
            "Read the column NAME of a table, by name or\nnumber, as this field (repeatable)")
        ->type_name("FIELD=NAME")
        ->expected(1)
        ->take_all();
} // namespace

} // namespace callrecordingctl

void AddImport(CommandLine& line) {
    auto const options = std::make_shared<Options>();
    CLI::App& import = AddEdit(line, "import", "Take rules from a table or another machine", kHelp,
                               options, Import);
    import.add_option("FILE", options->file, "JSON, comma-separated values, or a rule file")
        ->type_name("")
        ->required();
    AddColumn(import, options->columns);
    CLI::Option* const again =
        import.add_flag("--again", options->again, "Add also the rules that exist already");
    import.add_flag("--replace", options->replace, "Replace all rules that there are")
        ->excludes(again);
    AddEveryone(import, options->everyone);
}

} // namespace callrecordingctl
