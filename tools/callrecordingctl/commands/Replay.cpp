// replay: what the rules did with the calls of call records, and what other rules would have done.

#include <filesystem>
#include <memory>
#include <thread>

#include <unistd.h>

#include <fmt/format.h>

#include "CommandLine.h"
#include "Rules.h"
#include "commands/ReadingOptions.h"
#include "commands/RunReplay.h"
#include "output/ReplayPage.h"
#include "output/ReplayText.h"
#include "output/RuleText.h"
#include "records/reading/CallFiles.h"
#include "records/report/EachCall.h"
#include "records/report/ReplayState.h"
#include "text/Printable.h"

namespace callrecordingctl {
namespace {

constexpr char kHelp[] =
    R"(CALLS are files of call records, or folders of them: rows of separated values,
JSON, or what a telephone system that --format names writes; plain or compressed
with gzip, xz or zstd; - is standard input. Columns are found by the names that
call-record writers use, as src and dst, caller_id_number and
destination_number, calldate. The report says what was chosen. An address such as
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
    std::string key; // The column that comes first then.
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

/// Has a line printed for each call and each line that cannot be read, before more of a file is
/// read.
void PrintEach(Replay::Options& how, EachCall const& each, bool json) {
    bool const isTerminal = isatty(STDOUT_FILENO) == 1;
    auto const print = [isTerminal](std::string const& line) {
        std::string_view rest = line; // No field has a tab.
        for (std::size_t tab = 0; isTerminal && (tab = rest.find('\t')) != rest.npos;
             rest.remove_prefix(tab + 1))
            fmt::print("{}\t", Printable(rest.substr(0, tab)));
        fmt::print("{}\n", isTerminal ? Printable(rest) : rest);
    };
    auto const dump = [](nlohmann::ordered_json const& object) {
        return object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    };
    how.onCall = [=](DecidedCall const& call) {
        print(json ? dump(each.Json(call)) : each.Text(call));
    };
    how.onUnreadable = [=](CallRecord const& record, std::string const& file) {
        print(json ? dump(each.Json(record, file)) : each.Text(record));
    };
    how.onWait = [] { std::fflush(stdout); };
}

ReplayState Count(Context const& context, Options const& options) {
    ReplayFacts facts = ReadFacts(context.path, options.against);
    Replay::Options how;
    how.format = options.format;
    how.jobs = options.jobs;
    std::optional<std::size_t> key;
    if (!options.key.empty()) {
        key = how.format.wanted.size();
        how.format.wanted.push_back({{options.key}, "--key"});
    }
    if (options.each)
        PrintEach(how, EachCall(facts, key), context.json);
    ReplayReport report = RunReplay(options.calls, facts.here.rules,
                                    facts.there ? &facts.there->rules : nullptr, how);
    return {std::move(facts), std::move(report)};
}

/// A part knows nothing of what another one has seen.
void RequireNoDistinct(ReplayReport const& report) {
    for (ReplayReport::File const& file : report.files)
        if (!file.reading.distinct.empty())
            throw Failure(
                kExitUsage,
                fmt::format("--partial: {} is read as {}, of which only the first record of each "
                            "{} counts; choose the records with --where",
                            file.path, file.reading.title, file.reading.distinct));
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
        std::vector<std::string> used = CallFilesIn(options.calls);
        used.insert(used.end(), options.parts.begin(), options.parts.end());
        used.insert(used.end(), {context.path, context.path + ".history", context.path + ".lock",
                                 options.against});
        RequireSparePage(options.page, used);
    }
    auto const [facts, report] =
        options.parts.empty() ? Count(context, options) : Merge(options.parts);
    if (options.isPartial)
        RequireNoDistinct(report);
    if (options.isPartial)
        fmt::print("{}\n", StateLine({facts, report}));
    else if (context.json && !options.each)
        PrintJson(ToJson(report, facts));
    else if (!options.each)
        PrintReplay(report, facts);
    if (!options.page.empty())
        WriteReplayPage(options.page, report, facts);
    if (options.each && report.isInterrupted)
        Say("interrupted: {} calls and {} lines that cannot be read until then", report.all.calls,
            report.unreadable);
    if (report.isInterrupted)
        return kExitStopped;
    bool const isAnyTooMany = options.strict || report.all.calls == 0;
    return isAnyTooMany && report.unreadable > 0 ? kExitNo : kExitYes;
}

} // namespace

void AddReplay(CommandLine& line) {
    auto const options = std::make_shared<Options>();
    CLI::App& replay =
        line.AddCommand("replay", "Show what the rules did with the calls of call records", kHelp,
                        options, ReplayCalls);
    replay.add_option("CALLS", options->calls, "Files of call records")->type_name("");
    CLI::Option* const distinct = AddReading(replay, options->format);
    CLI::Option* const against = replay
                                     .add_option("--against", options->against,
                                                 "Compare with the rules of another rule file")
                                     ->type_name("FILE");
    replay.add_option("--html", options->page, "Write a page for people, too")->type_name("FILE");
    CLI::Option* const each =
        replay.add_flag("--each", options->each, "Print each call with its decision instead");
    replay.add_option("--key", options->key, "With --each: print this column first")
        ->type_name("COLUMN")
        ->needs(each);
    replay
        .add_flag("--partial", options->isPartial, "Print what was counted as one line for --merge")
        ->excludes(each)
        ->excludes(distinct);
    replay.add_option("--merge", options->parts, "Add up what --partial printed")
        ->type_name("PARTS")
        ->excludes(each)
        ->excludes(against);
    AddNumber(replay, "--jobs", "N", "Threads; without it one for each processor", 1,
              [options](std::uint32_t jobs) { options->jobs = jobs; });
    replay.add_flag("--strict", options->strict, "Exit with 1 when a line cannot be read");
}

} // namespace callrecordingctl
