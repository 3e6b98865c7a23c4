// export: prints the rules in a form that import reads.

#include <cstdio>
#include <memory>

#include <fmt/format.h>
#include <host/AtomicFile.h>

#include "CommandLine.h"
#include "administration/exchange/CsvRules.h"
#include "administration/inspection/RuleNames.h"
#include "commands/TextAt.h"
#include "output/RuleText.h"

namespace callrecordingctl {
namespace {

constexpr char kHelp[] =
    R"(Prints all rules for "import": comma-separated values, which spreadsheets read,
or with --json what "list --json" prints. Patterns are in the entry form. With
--file it prints the rule file itself, byte for byte.
Examples:
  callrecordingctl export >rules.csv
  callrecordingctl export --at monday --file >callrecordingdb.monday
)";

struct Options {
    bool isCsv = false;
    bool isFile = false;
    std::optional<std::int64_t> at;
};

ExitCode PrintFile(std::string const& path, std::optional<std::int64_t> at) {
    RequireDirectory(path);
    std::string const text = at ? TextAt(path, *at) : HostPlatform::ReadFile(path).text;
    std::fwrite(text.data(), 1, text.size(), stdout);
    return kExitYes;
}

ExitCode Export(Context const& context, Options const& options) {
    if (options.isFile)
        return PrintFile(context.path, options.at);
    std::string digest;
    RuleList const rules = RulesAt(context.path, options.at, digest);
    if (context.json) {
        PrintJson(ListToJson(rules, digest));
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
    auto const options = std::make_shared<Options>();
    CLI::App& command =
        line.AddCommand("export", "Print the rules for import", kHelp, options, Export);
    CLI::Option* const csv =
        command.add_flag("--csv", options->isCsv, "Print comma-separated values (default)");
    command.add_flag("--file", options->isFile, "Print the bytes of the rule file")->excludes(csv);
    AddAt(command, "The rules as they were then", options->at);
}

} // namespace callrecordingctl
