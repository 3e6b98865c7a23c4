// diff: says whether two rule files decide every call alike.

#include <algorithm>
#include <filesystem>
#include <memory>

#include <fmt/format.h>

#include "CommandLine.h"
#include "Rules.h"
#include "commands/AnalysisOptions.h"
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
    AnalysisOptions analysis;
};

void Print(Comparison const& comparison, RuleList const& here, RuleList const& there,
           CallKind calls, Context const& context) {
    if (comparison.same == true)
        fmt::print("both decide every call alike\n");
    for (Difference const& difference : comparison.differences)
        fmt::print("{}\n  {}\n  here {}\n  there {}\n", CallText(difference.call),
                   DecideCommand(difference.call, calls, context),
                   DecisionText(here, difference.here), DecisionText(there, difference.there));
}

/// Whether two comparisons of the same lists find the same.
bool FindTheSame(Comparison const& a, Comparison const& b) {
    auto const isSamePair = [](Difference const& x, Difference const& y) {
        return x.here == y.here && x.there == y.there;
    };
    return a.same == b.same && std::equal(a.differences.begin(), a.differences.end(),
                                          b.differences.begin(), b.differences.end(), isSamePair);
}

char const* Summary(Comparison const& comparison) {
    return !comparison.same   ? "it is undecided"
           : *comparison.same ? "they are alike"
                              : "they differ";
}

ExitCode Diff(Context const& context, Options const& options) {
    if (!std::filesystem::exists(options.file))
        throw Failure(kExitUnreadable, options.file + ": there is no such file");
    RuleList const here = LoadRules(context.path);
    RuleList const there = LoadRules(options.file);
    NoteMalformed(here);
    NoteMalformed(there, " of the other file");
    CallKind const calls = options.analysis.calls;
    CallKind const others = OtherThan(calls);
    Comparison const comparison = Compare(here, there, options.analysis.memory, calls);
    Comparison const other = Compare(here, there, options.analysis.memory, others);
    bool const isOtherwise = !FindTheSame(comparison, other);
    if (context.json) {
        nlohmann::ordered_json json = ComparisonToJson(comparison, here, there);
        json["other_calls"] = nullptr;
        if (isOtherwise) {
            json["other_calls"] = {{"calls", CallsName(others)}};
            json["other_calls"].update(ComparisonToJson(other, here, there));
        }
        PrintJson(json);
    } else {
        Print(comparison, here, there, calls, context);
        if (isOtherwise)
            fmt::print("with --calls {} {}, for {} {} of rules\n", CallsName(others),
                       Summary(other), other.differences.size(),
                       other.differences.size() == 1 ? "pair" : "pairs");
    }
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
        "diff", "Say whether another rule file decides every call alike", kHelp, options, Diff);
    AddText(diff, "FILE", "", "The other rule file, by its path",
            [options](std::string const& text) { options->file = text; })
        ->required();
    AddAnalysis(diff, options->analysis);
}

} // namespace callrecordingctl
