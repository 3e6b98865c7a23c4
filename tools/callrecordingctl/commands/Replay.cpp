// replay: what the rules did with the calls of call records, and what other rules would have done.

#include <filesystem>
#include <memory>
#include <thread>

#include <fmt/format.h>

#include "CommandLine.h"
#include "Rules.h"
#include "commands/ColumnOptions.h"
#include "commands/RunReplay.h"
#include "model/CallTypeNames.h"
#include "output/ReplayPage.h"
#include "output/ReplayText.h"
#include "output/RuleText.h"
#include "records/report/ReplayState.h"

namespace callrecordingctl {
namespace {

constexpr char kHelp[] =
    R"(CALLS are files of call records: values separated by commas or semicolons below
a row of names, or JSON, one object a line; plain or .gz; - is standard input.
Columns are found by the names that call-record writers use, as src and dst,
caller_id_number and destination_number, calldate. An address such as
"Alice" <sip:201@pbx;user=phone> is read as a party, as decide does it; one with
a call type in a column of its own is compared byte for byte. The report counts
both, what was left out of addresses, and lines that cannot be read. Calls that
a rule forbids to record are counted apart.
Files can be replayed in parts, on several computers: each part with --partial,
and --merge, in the order of the files, prints what one replay of all of them
would print.
Examples:
  callrecordingctl replay calls.csv --no-header --from-column 2 --to-column 3
  callrecordingctl replay november.csv.gz --against /tmp/callrecordingdb.new
  callrecordingctl replay november.csv.gz --html november.html
)";

struct Options {
    std::vector<std::string> calls;
    std::vector<std::string> parts; // To merge, instead of calls.
    CallFormat format;
    std::string against;
    std::string page;
    bool each = false;
    bool isPartial = false;
    bool strict = false;
    std::size_t jobs = std::max(std::thread::hardware_concurrency(), 1U);
};

RuleFileFacts ReadRuleFile(std::string const& path) {
    RuleFileFacts facts{path, "", {}};
    facts.rules = LoadRules(path, facts.digest);
    if (!HasRuleFile(path))
        facts.digest.clear();
    return facts;
}

ReplayFacts ReadFacts(std::string const& path, std::string const& against) {
    ReplayFacts facts{ReadRuleFile(path), std::nullopt};
    if (against.empty())
        return facts;
    if (!std::filesystem::exists(against))
        throw Failure(kExitUnreadable, against + ": there is no such file");
    // A name without a directory would read as one in none.
    facts.there = ReadRuleFile(std::filesystem::absolute(against).string());
    return facts;
}

void PrintEach(DecidedCall const& call, RuleList const& rules, bool json) {
    if (json)
        fmt::print(
            "{}\n",
            ToJson(call, rules).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
    else
        PrintCall(call, rules);
}

ReplayState Count(Context const& context, Options const& options) {
    ReplayFacts facts = ReadFacts(context.path, options.against);
    Replay::Options how;
    how.format = options.format;
    how.parseCallType = ParseCallType;
    how.jobs = options.jobs;
    if (options.each)
        how.onCall = [&](DecidedCall const& call) {
            PrintEach(call, facts.here.rules, context.json);
        };
    ReplayReport report = RunReplay(options.calls, facts.here.rules,
                                    facts.there ? &facts.there->rules : nullptr, how);
    return {std::move(facts), std::move(report)};
}

ReplayState Merge(std::vector<std::string> const& parts) {
    std::optional<ReplayState> merged;
    for (std::string const& part : parts)
        for (ReplayState& state : ReadStates(part))
            if (merged)
                AddState(*merged, std::move(state), part);
            else
                merged = std::move(state);
    return std::move(*merged); // ReadStates returns one at least.
}

ExitCode ReplayCalls(Context const& context, Options const& options) {
    if (options.calls.empty() == options.parts.empty())
        throw Failure(kExitUsage,
                      "replay: name either files of call records or parts, with --merge");
    if (!options.page.empty()) {
        std::vector<std::string> used = options.calls;
        used.insert(used.end(), options.parts.begin(), options.parts.end());
        used.insert(used.end(), {context.path, context.path + ".history", context.path + ".lock",
                                 options.against});
        RequireSparePage(options.page, used);
    }
    auto const [facts, report] =
        options.parts.empty() ? Count(context, options) : Merge(options.parts);
    if (options.isPartial)
        fmt::print("{}\n", StateLine({facts, report}));
    else if (context.json && !options.each)
        PrintJson(ToJson(report, facts));
    else if (!options.each)
        PrintReplay(report, facts);
    if (!options.page.empty())
        WriteReplayPage(options.page, report, facts);
    if (report.isInterrupted)
        return kExitStopped;
    return options.strict && report.unreadable > 0 ? kExitNo : kExitYes;
}

} // namespace

void AddReplay(CommandLine& line) {
    auto const options = std::make_shared<Options>();
    CLI::App& replay =
        line.AddCommand("replay", "Show what the rules did with the calls of call records", kHelp,
                        options, ReplayCalls);
    replay.add_option("CALLS", options->calls, "Files of call records")->type_name("");
    AddColumns(replay, options->format);
    CLI::Option* const against = replay
                                     .add_option("--against", options->against,
                                                 "Compare with the rules of another rule file")
                                     ->type_name("FILE");
    replay.add_option("--html", options->page, "Write a page for people, too")->type_name("FILE");
    CLI::Option* const each =
        replay.add_flag("--each", options->each, "Print each call with its decision instead");
    replay
        .add_flag("--partial", options->isPartial, "Print what was counted as one line for --merge")
        ->excludes(each);
    replay.add_option("--merge", options->parts, "Add up what --partial printed")
        ->type_name("PARTS")
        ->excludes(each)
        ->excludes(against);
    AddNumber(replay, "--jobs", "N", "Threads; without it one for each processor", 1,
              [options](std::uint32_t jobs) { options->jobs = jobs; });
    replay.add_flag("--strict", options->strict, "Exit with 1 when a line cannot be read");
}

} // namespace callrecordingctl
