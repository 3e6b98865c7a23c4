// import: the rules of a table or of another machine, all or none.

#include <algorithm>
#include <limits>
#include <memory>
#include <set>
#include <tuple>
#include <unordered_map>
#include <unordered_set>

#include <fmt/format.h>

#include "administration/edit/Origins.h"
#include "administration/exchange/ImportedRules.h"
#include "administration/inspection/RuleNames.h"
#include "commands/Registry.h"
#include "commands/RuleFields.h"
#include "commands/RunEdit.h"
#include "model/RuleSides.h"
#include "output/RuleText.h"
#include "text/Printable.h"
#include "validation/SidePattern.h"

namespace callrecordingctl {
namespace {

constexpr char kHelp[] =
    R"(FILE holds what "list --json" or "export" prints, or a table with separators ,
or ; whose first row names the columns: from, from_type, to, to_type, record_to,
duration, description, recording_type, enabled, id; "-" is standard input.
Columns mean what the options of add mean, and may be left out.
Everything is checked first, and every fault is told with its line. Then all
rules are saved at once: behind the others under new identifiers, or with
--replace in the place of all others; rules that stay keep their lines of the
file.
)";

struct Options {
    std::string file;
    bool replace = false;
    bool everyone = false;
};

/// Rules, by all that they say.
using RuleSet = std::unordered_set<std::string>;

/// What is left of the rule when it is printed as JSON, which has no bytes that are no UTF-8.
Rule AsPrinted(Rule rule) {
    for (std::string* text : {&rule.caller_pattern, &rule.called_pattern, &rule.record_to,
                              &rule.recording_duration, &rule.description}) {
        using nlohmann::json;
        *text = json::parse(json(*text).dump(-1, ' ', false, json::error_handler_t::replace))
                    .get<std::string>();
    }
    return rule;
}

Rule InEntryForm(Rule rule) {
    rule.caller_pattern = ToEntry(rule.caller_pattern, rule.caller_call_type);
    rule.called_pattern = ToEntry(rule.called_pattern, rule.called_call_type);
    return rule;
}

/// A rule that the file has already stays as it is, and nothing is wrong with it.
void TakeOver(RuleList const& before, std::vector<ImportedRule>& imported) {
    std::unordered_map<std::string, Rule const*> printed;
    for (Rule const& rule : before) {
        printed.emplace(AllFields(AsPrinted(rule)), &rule);
        // A malformed pattern in a table stands there in the entry form, and cannot be converted.
        printed.emplace("entry " + AllFields(InEntryForm(AsPrinted(rule))), &rule);
    }
    for (ImportedRule& wanted : imported) {
        std::string const all = AllFields(AsPrinted(wanted.rule));
        auto found = printed.find(all);
        if (found == printed.end() && !wanted.faults.empty())
            found = printed.find("entry " + all);
        if (found == printed.end())
            continue;
        wanted.rule = *found->second;
        wanted.faults.clear();
    }
}

Rule WithoutId(Rule rule) {
    rule.callrecordingrule_id = -1;
    return rule;
}

/// A rule without an identifier takes that of one which says the same, else the next free one.
void GiveIds(RuleList const& before, std::vector<ImportedRule>& imported, bool replace) {
    std::set<std::int32_t> taken;
    for (ImportedRule& wanted : imported) {
        if (!replace)
            wanted.rule.callrecordingrule_id = -1;
        taken.insert(wanted.rule.callrecordingrule_id);
    }
    std::int64_t next = std::int64_t{*taken.rbegin()} + 1;
    std::unordered_multimap<std::string, std::int32_t> same;
    for (Rule const& rule : before) {
        next = std::max(next, std::int64_t{rule.callrecordingrule_id} + 1);
        if (replace && taken.count(rule.callrecordingrule_id) == 0)
            same.emplace(AllFields(WithoutId(rule)), rule.callrecordingrule_id);
    }
    for (ImportedRule& wanted : imported) {
        std::int32_t& id = wanted.rule.callrecordingrule_id;
        if (id >= 0)
            continue;
        auto const found = same.find(AllFields(wanted.rule));
        if (found == same.end() && next > std::numeric_limits<std::int32_t>::max())
            throw Failure(kExitUnsaved,
                          "no identifier is left behind 2147483647; \"callrecordingctl "
                          "renumber --all\" makes room");
        id = found != same.end() ? found->second : static_cast<std::int32_t>(next++);
        if (found != same.end())
            same.erase(found);
    }
}

std::string NameOf(std::string const& file) {
    return file == "-" ? "standard input" : file;
}

void CheckRules(std::vector<ImportedRule>& imported, RuleSet const& before, bool everyone) {
    std::set<std::int32_t> ids;
    for (auto& [rule, line, faults] : imported) {
        bool const isThere = before.count(AllFields(rule)) > 0;
        if (rule.callrecordingrule_id >= 0 && !ids.insert(rule.callrecordingrule_id).second &&
            !isThere)
            faults.push_back(
                {line, fmt::format("the identifier {} is given twice", rule.callrecordingrule_id)});
        if (IsForEveryone(rule) && !everyone && !isThere && faults.empty())
            faults.push_back({line, "this rule would record every call; give from or to, or "
                                    "--everyone if that is meant"});
    }
}

/// Says what is well formed and yet surely not meant, of the rules that are new.
void NoteSuspicions(std::string const& file, std::vector<ImportedRule> const& imported,
                    RuleSet const& before) {
    for (auto const& [rule, line, faults] : imported) {
        if (before.count(AllFields(rule)) > 0)
            continue;
        for (auto const& [side, pattern, type] :
             {std::tuple("from", rule.caller_pattern, rule.caller_call_type),
              std::tuple("to", rule.called_pattern, rule.called_call_type)})
            if (auto const suspicion = SuspectStored(pattern, type))
                Say("{}:{}: {}: note: {}\n{}", NameOf(file), line, side, suspicion->message,
                    CaretText(ToEntry(pattern, type), suspicion->position));
    }
}

/// Throws the Failure that tells all faults.
void RequireFaultless(std::string const& file, std::vector<ImportedRule> const& imported,
                      std::vector<ImportFault> faults) {
    for (ImportedRule const& rule : imported)
        faults.insert(faults.end(), rule.faults.begin(), rule.faults.end());
    if (faults.empty())
        return;
    std::stable_sort(faults.begin(), faults.end(),
                     [](ImportFault const& a, ImportFault const& b) { return a.line < b.line; });
    std::string message;
    for (auto const& [line, text] : faults)
        message += fmt::format("{}:{}: {}\n", NameOf(file), line, text);
    throw Failure(kExitNo, fmt::format("{}{} {}; nothing was imported", message, faults.size(),
                                       faults.size() == 1 ? "fault" : "faults"));
}

ExitCode Import(RuleEdit& edit, Options const& options) {
    std::vector<ImportFault> faults;
    std::vector<ImportedRule> imported = ReadImport(options.file, faults);
    RuleList const before = edit.Before();
    if (options.replace)
        TakeOver(before, imported);
    RuleSet stay;
    for (Rule const& rule : before)
        if (options.replace)
            stay.insert(AllFields(rule));
    CheckRules(imported, stay, options.everyone);
    RequireFaultless(options.file, imported, faults);
    NoteSuspicions(options.file, imported, stay);
    // An empty file is more likely what is left of a pipe that failed than a wish to lose all
    // rules.
    if (imported.empty())
        throw Failure(kExitNo, NameOf(options.file) + ": holds no rules; nothing was imported");
    GiveIds(before, imported, options.replace);
    RuleList rules;
    if (!options.replace)
        rules = before;
    for (ImportedRule const& rule : imported)
        rules.push_back(rule.rule);
    edit.Replace(rules);
    return kExitYes;
}

} // namespace

void AddImport(CommandLine& line) {
    auto const options = std::make_shared<Options>();
    CLI::App& import = AddEdit(line, "import", "Take rules from a table or another machine", kHelp,
                               [options](RuleEdit& edit) { return Import(edit, *options); });
    import.add_option("FILE", options->file, "JSON, or comma-separated values")
        ->type_name("")
        ->required();
    import.add_flag("--replace", options->replace, "In the place of all rules that there are");
    AddEveryone(import, options->everyone);
}

} // namespace callrecordingctl
