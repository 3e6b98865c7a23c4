// diff: says whether two sets of rules decide every call alike.

#include <algorithm>
#include <filesystem>
#include <memory>

#include <fmt/format.h>

#include "CommandLine.h"
#include "Rules.h"
#include "administration/edit/Changes.h"
#include "administration/exchange/ImportedRules.h"
#include "administration/inspection/ReadRules.h"
#include "administration/inspection/RuleNames.h"
#include "commands/AnalysisOptions.h"
#include "commands/TextAt.h"
#include "common/Error.h"
#include "output/CallText.h"
#include "output/ComparisonText.h"
#include "output/EditReport.h"
#include "output/RuleText.h"
#include "output/Screen.h"
#include "text/Printable.h"

namespace callrecordingctl {
namespace {

constexpr char kHelp[] =
    R"(Two sets of rules decide a call alike if both record it with the same recording
type, destination and duration, or neither records it. Identifiers, descriptions
and the order alone make no difference. All calls that there can be are examined;
one call is shown for each pair of rules that decide it differently, of a rule
that has changed or moved for about ten such pairs: --all and --json have the
others, of which there can be thousands. FILE is a
rule file, or what export prints on another machine; "-" is standard input. --at
takes the rules here as they were then, and compares them with FILE or, without
one, with the rules now. --rules says how the rules themselves differ instead.
Exit status: 0 alike, 1 different, 6 undecided.
Examples:
  callrecordingctl diff --at yesterday
  ssh pbx2 callrecordingctl export --json | callrecordingctl diff -
)";

struct Options {
    std::string file;
    std::optional<std::int64_t> at;
    bool comparesRules = false;
    bool all = false;
    AnalysisOptions analysis;
};

/// What is compared, and what it is called.
struct Side {
    RuleList rules;
    char const* name;
};

struct Sides {
    Side here, there;
};

char const* Summary(Comparison const& comparison) {
    return !comparison.same   ? "it is undecided"
           : *comparison.same ? "they are alike"
                              : "they differ";
}

void Show(ComparedCalls const& calls, Sides const& sides, Context const& context) {
    auto const& [here, there] = sides;
    CallKind const others = OtherThan(calls.kind);
    if (calls.asked.same == true)
        PrintLines("both decide every {} alike\n",
                   calls.AreOtherwise() ? CallOf(calls.kind) : "call");
    for (Difference const& difference : calls.asked.differences)
        PrintLines("{}\n{}  {} {}\n  {} {}\n", CallText(difference.call),
                   WrappedCommand("  " + DecideCommand(difference.call, calls.kind, context), 4),
                   here.name, DecisionText(here.rules, difference.here), there.name,
                   DecisionText(there.rules, difference.there));
    if (!calls.asked.areAllLookedFor)
        PrintLines("and perhaps calls for more pairs of rules, which --all shows\n");
    if (calls.AreOtherwise())
        PrintLines("with --calls {} {}, for {} of rules\n", CallsName(others), Summary(calls.other),
                   PairsText(calls.other.differences.size(), calls.other.areAllLookedFor));
}

/// The rules of a file, whatever it is that import reads. A rule that import would refuse may be in
/// it if it is here as well.
RuleList ReadOther(std::string const& file, RuleList const& here) {
    if (file != "-" && !std::filesystem::exists(file))
        throw Failure(kExitUnreadable, file + ": there is no such file");
    std::string const name = file == "-" ? "standard input" : file;
    std::string const text = ReadInput(file);
    if (file == "-" && text.empty())
        throw Failure(kExitUnreadable,
                      "standard input: nothing came; no rules at all are [] in JSON");
    try {
        return RulesOf(text, name);
    } catch (Error const&) { // It is no rule file.
    }
    ImportFile other = ReadImport(text, name);
    KeepPresent(here, other);
    std::vector<ImportFault> faults = other.faults;
    for (ImportedRule const& rule : other.rules)
        faults.insert(faults.end(), rule.faults.begin(), rule.faults.end());
    if (!faults.empty())
        throw Failure(kExitUnreadable,
                      fmt::format("{}:{}: {}", name, faults.front().line, faults.front().message));
    return RulesAfter({}, other.rules, true);
}

Sides ReadSides(Context const& context, Options const& options) {
    std::string ignored;
    RuleList rules = RulesAt(context.path, options.at, ignored);
    if (!options.file.empty()) {
        RuleList others = ReadOther(options.file, rules);
        return {{std::move(rules), options.at ? "then" : "here"}, {std::move(others), "there"}};
    }
    if (!options.at)
        throw Failure(kExitUsage, "FILE or --at is required (see \"callrecordingctl help diff\")");
    return {{std::move(rules), "then"}, {LoadRules(context.path), "now"}};
}

/// Says how the rules differ.
ExitCode DiffRules(Sides const& sides, bool json) {
    auto const& [here, there] = sides;
    std::vector<Change> const changes = ChangesBetween(here.rules, there.rules);
    if (json) {
        PrintJson(ChangesToJson(changes));
    } else {
        for (Change const& change : changes) {
            if (!change.isMeant)
                continue;
            bool const isOne = change.before == nullptr || change.after == nullptr;
            PrintLines("{}{}\n",
                       Printable(NameOf(change.before != nullptr ? *change.before : *change.after)),
                       isOne ? fmt::format(" is only {}",
                                           change.before != nullptr ? here.name : there.name)
                             : "");
            for (std::string const& field : FieldLines(change))
                PrintLines("  {}\n", Printable(field));
        }
        auto const others = std::count_if(changes.begin(), changes.end(),
                                          [](Change const& change) { return !change.isMeant; });
        if (others > 0)
            PrintLines("{} {} other places and identifiers for it\n", others,
                       others == 1 ? "rule has" : "rules have");
        if (changes.empty())
            PrintLines("the rules are the same\n");
        else
            PrintLines("- is {}, + is {}\n", here.name, there.name);
    }
    return changes.empty() ? kExitYes : kExitNo;
}

ExitCode DiffCalls(Context const& context, Sides const& sides, Options const& options) {
    RuleList const& here = sides.here.rules;
    RuleList const& there = sides.there.rules;
    NoteMalformed(here);
    NoteMalformed(there, " of the other rules");
    CallKind const calls = options.analysis.calls;
    std::size_t const most = options.all || context.json ? kAllPairs : kPairsOfRuleShown;
    ComparedCalls const compared = CompareCalls(here, there, most, options.analysis.memory, calls);
    Comparison const& comparison = compared.asked;
    if (context.json)
        PrintJson(ToJson(compared, here, there));
    else
        Show(compared, sides, context);
    if (IsIncomplete(comparison))
        Say("undecided{}: {}",
            comparison.differences.empty() ? "" : ", for pairs of rules other than these",
            WhyIncomplete(comparison, here, there));
    if (!comparison.same)
        return kExitUndecided;
    return *comparison.same ? kExitYes : kExitNo;
}

ExitCode Diff(Context const& context, Options const& options) {
    Sides const sides = ReadSides(context, options);
    return options.comparesRules ? DiffRules(sides, context.json)
                                 : DiffCalls(context, sides, options);
}

} // namespace

void AddDiff(CommandLine& line) {
    auto const options = std::make_shared<Options>();
    CLI::App& diff = line.AddCommand("diff", "Say whether other rules decide every call alike",
                                     kHelp, options, Diff);
    AddText(diff, "FILE", "", "The other rules: a rule file, or what export printed",
            [options](std::string const& text) { options->file = text; });
    AddAt(diff, "The rules here as they were then", options->at);
    diff.add_flag("--rules", options->comparesRules, "Show how the rules differ, not the calls");
    diff.add_flag("--all", options->all, "Show a call for each pair of rules, however many");
    AddAnalysis(diff, options->analysis);
}

} // namespace callrecordingctl
