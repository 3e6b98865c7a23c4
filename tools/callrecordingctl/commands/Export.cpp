// export: prints the rules in a form that import reads.

#include <memory>

#include <fmt/format.h>

#include "CommandLine.h"
#include "administration/exchange/CsvRules.h"
#include "administration/inspection/Digest.h"
#include "administration/inspection/RuleNames.h"
#include "output/RuleText.h"

namespace callrecordingctl {
namespace {

constexpr char kHelp[] =
    R"(Prints all rules for "import": comma-separated values, which spreadsheets read,
or with --json what "list --json" prints. Patterns are in the entry form.
Example: callrecordingctl export >rules.csv
)";

ExitCode Export(Context const& context) {
    std::string digest;
    RuleList const rules = LoadRules(context.path, digest);
    std::string const state = StateToken(digest);
    if (context.json) {
        PrintJson(ListToJson(rules, state));
        return kExitYes;
    }
    fmt::print("{}", CsvHeader());
    for (Rule const& rule : rules) {
        if (rule.caller_pattern.empty() || rule.called_pattern.empty())
            Say("{} has an empty pattern, which never matches; a table cannot say so, JSON can",
                NameOf(rule));
        fmt::print("{}", CsvRow(rule));
    }
    return kExitYes;
}

} // namespace

void AddExport(CommandLine& line) {
    auto const isCsv = std::make_shared<bool>();
    CLI::App& command =
        line.AddCommand("export", "Print the rules for import", kHelp,
                        [isCsv](Context const& context) { return Export(context); });
    command.add_flag("--csv", *isCsv, "Print comma-separated values (default)");
}

} // namespace callrecordingctl
