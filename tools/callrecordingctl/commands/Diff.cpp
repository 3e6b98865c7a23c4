// diff: says whether two rule files decide every call alike.

#include <filesystem>
#include <memory>

#include <fmt/format.h>

#include "CommandLine.h"
#include "Rules.h"
#include "commands/AnalysisOptions.h"
#include "commands/Registry.h"
#include "output/CallText.h"
#include "output/ComparisonText.h"
#include "output/RuleText.h"

namespace callrecordingctl {
namespace {

constexpr char kHelp[] =
    R"(Two files decide a call alike if both record it with the same recording type,
destination and duration, or neither records it. Identifiers, descriptions and
the order alone make no difference. All calls that there can be are examined;
one call is shown for each pair of rules that decide it differently, one here
and the other in FILE.
Exit status: 0 alike, 1 different, 6 undecided.
Example: callrecordingctl diff callrecordingdb.old
)";

struct Options {
    std::string file;
    std::size_t memory = kAnalysisMemory;
};

void Print(Comparison const& comparison, RuleList const& here, RuleList const& there) {
    if (comparison.same == true)
        fmt::print("both decide every call alike\n");
    for (Difference const& difference : comparison.differences)
        fmt::print("{}\n  here {}\n  there {}\n", CallText(difference.call),
                   DecisionText(here, difference.here), DecisionText(there, difference.there));
}

ExitCode Diff(Context const& context, Options const& options) {
    if (!std::filesystem::exists(options.file))
        throw Failure(kExitUnreadable, options.file + ": there is no such file");
    RuleList const here = LoadRules(context.path);
    RuleList const there = LoadRules(options.file);
    Comparison const comparison = Compare(here, there, options.memory);
    if (context.json)
        PrintJson(ComparisonToJson(comparison, here, there));
    else
        Print(comparison, here, there);
    if (IsIncomplete(comparison))
        Say("undecided{}: {}",
            comparison.differences.empty() ? "" : ", for pairs of rules other than these",
            WhyIncomplete(comparison, here, there));
    if (!comparison.same)
        return kExitUndecided;
    return *comparison.same ? kExitYes : kExitNo;
}

} // namespace

void AddDiff(CommandLine& line) {
    auto const options = std::make_shared<Options>();
    CLI::App& diff = line.AddCommand(
        "diff", "Say whether another rule file decides every call alike", kHelp,
        [options](Context const& context) { return Diff(context, *options); });
    AddText(diff, "FILE", "", "The other rule file, by its path",
            [options](std::string const& text) { options->file = text; })
        ->required();
    AddMemory(diff, options->memory);
}

} // namespace callrecordingctl
