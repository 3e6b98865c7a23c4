// diff: whether two rule files decide every call alike.

#include <filesystem>
#include <memory>

#include <fmt/format.h>

#include "CommandLine.h"
#include "Rules.h"
#include "administration/check/Reasons.h"
#include "commands/AnalysisOptions.h"
#include "commands/Registry.h"
#include "output/CallText.h"
#include "output/RuleText.h"

namespace callrecordingctl {
namespace {

constexpr char kHelp[] =
    R"(Alike: recorded by both with the same recording type, destination and duration,
or by neither. Identifiers, descriptions and order do not count by themselves.
Looks at all calls there can be, and shows one for each pair of rules of which
the one decides it here, the other in FILE, and they say different things.
Exit status: 0 alike, 1 they differ, 6 undecided.
Example: callrecordingctl diff callrecordingdb.old
)";

struct Options {
    std::string file;
    std::size_t memory = kAnalysisMemory;
};

ExitCode Diff(Context const& context, Options const& options) {
    if (!std::filesystem::exists(options.file))
        throw Failure(kExitUnreadable, options.file + ": there is no such file");
    RuleList const here = LoadRules(context.path);
    RuleList const there = LoadRules(options.file);
    Comparison const comparison = Compare(here, there, options.memory);
    if (context.json)
        PrintJson({{"same", comparison.same ? nlohmann::ordered_json(*comparison.same)
                                            : nlohmann::ordered_json()},
                   {"differences", DifferencesToJson(comparison.differences, here, there)}});
    else if (comparison.same == true)
        fmt::print("both decide every call alike\n");
    for (Difference const& difference : comparison.differences)
        if (!context.json)
            fmt::print("{}\n  here {}\n  there {}\n", CallText(difference.call),
                       DecisionText(here, difference.here), DecisionText(there, difference.there));
    if (!comparison.undecided.empty()) {
        UndecidedPair const& pair = comparison.undecided.front();
        Say("undecided: {}", WhyUndecided(pair.isWhyThere ? there : here, pair.why));
    }
    return !comparison.same ? kExitUndecided : *comparison.same ? kExitYes : kExitNo;
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
