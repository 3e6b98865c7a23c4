// replay: what the rules did with the calls of call records, and what other rules would have done.

#include <algorithm>
#include <memory>
#include <thread>

#include <unistd.h>

#include <fmt/format.h>

#include "CommandLine.h"
#include "commands/PolicyClaims.h"
#include "commands/ReadingOptions.h"
#include "commands/ReplayRules.h"
#include "commands/ReplayTruth.h"
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
    PageOptions page;
    TruthOptions truth;
    std::string asOf;               // Empty: by the rules of now.
    std::vector<std::string> given; // What makes a difference to the counts, as it was written.
    bool each = false;
    std::string key; // The column that comes first then.
    bool isPartial = false;
    bool strict = false;
    std::size_t jobs = std::max(std::thread::hardware_concurrency(), 1U);
};

/// Has a line printed for each call and each line that cannot be read, before more of a file is
/// read.
void PrintEach(Replay::Options& how, EachCall const& each, bool json) {
    bool const isTerminal = isatty(STDOUT_FILENO) == 1;
    auto const print = [isTerminal](std::string const& line) {
        std::string_view rest = line; // No field has a tab.
        for (std::size_t tab = 0; isTerminal && (tab = rest.find('\t')) != std::string_view::npos;
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
    ReplayRules rules(context.path, options.asOf, options.against);
    Replay::Options how;
    how.format = options.format;
    how.jobs = options.jobs;
    how.withDigests =
        !options.each && (context.json || options.isPartial || !options.page.path.empty());
    std::optional<std::size_t> key;
    if (!options.key.empty()) {
        key = how.format.wanted.size();
        how.format.wanted.push_back({{options.key}, "--key"});
    }
    if (options.each)
        PrintEach(how, EachCall(rules.Facts(), key), context.json);
    ReplayTruth const truth(options.truth, how);
    ReplayState state = rules.StateOf(RunReplay(options.calls, rules.Here(), rules.There(), how),
                                      options.isPartial);
    state.facts.options = options.given;
    return state;
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
    if (options.each && options.asOf == "history")
        throw Failure(kExitUsage, "replay: --each takes no --as-of history, only a time");
    if (options.calls.empty() == options.parts.empty())
        throw Failure(kExitUsage,
                      "replay: name either files of call records or parts, with --merge");
    if (!options.parts.empty() && !options.given.empty())
        throw Failure(kExitUsage,
                      fmt::format("replay: --merge takes no {}: the parts were counted already",
                                  options.given.front()));
    if (!options.page.path.empty()) {
        std::vector<std::string> used = CallFilesIn(options.calls);
        used.insert(used.end(), options.parts.begin(), options.parts.end());
        used.insert(used.end(), {context.path, context.path + ".history", context.path + ".lock",
                                 options.against, options.page.policy, options.truth.answers});
        RequireSparePage(options.page.path, used);
    }
    ReplayState state = options.parts.empty() ? Count(context, options) : Merge(options.parts);
    std::string const line = options.isPartial ? StateLine(state) : "";
    WholeReport whole = InOne(std::move(state));
    if (!options.page.policy.empty())
        whole.facts.claims = ProveClaims(options.page.policy, whole);
    ReplayFacts const& facts = whole.facts;
    ReplayReport const& report = whole.report;
    if (options.truth.isStrict && report.all.calls > 0 && report.reconciliation.Compared() == 0)
        throw Failure(kExitUnreadable,
                      "--strict-recordings: of no call is it known both whether it was recorded "
                      "and whether it should be; see --recorded-column, --recordings, --id-column "
                      "and --answers");
    if (options.isPartial)
        RequireNoDistinct(report);
    if (options.isPartial)
        fmt::print("{}\n", line);
    else if (context.json && !options.each)
        PrintJson(ToJson(report, facts));
    else if (!options.each)
        PrintReplay(report, facts);
    if (!options.page.path.empty())
        WriteReplayPage(options.page, report, facts);
    if (options.each && report.isInterrupted)
        Say("interrupted: {} calls and {} lines that cannot be read until then", report.all.calls,
            report.unreadable);
    if (report.isInterrupted)
        return kExitStopped;
    bool const isMissing =
        options.truth.isStrict && report.reconciliation.Total(Reconciliation::kMissing).calls > 0;
    bool const isAnyTooMany = options.strict || report.all.calls == 0;
    return isMissing || (isAnyTooMany && report.unreadable > 0) ? kExitNo : kExitYes;
}

/// The options of the line that make a difference to what is counted.
std::vector<std::string> GivenOptions(CLI::App const& replay) {
    std::vector<std::string> given;
    constexpr std::string_view kOthers[] = {
        "--html",   "--partial", "--merge", "--jobs",       "--strict", "--strict-recordings",
        "--system", "--policy",  "--json",  "--config-dir", "--each",   "--against",
        "--key"};
    for (CLI::Option const* const option : replay.get_options()) {
        std::string const name = option->get_name();
        if (option->count() == 0 || option->get_positional() ||
            std::find(std::begin(kOthers), std::end(kOthers), name) != std::end(kOthers))
            continue;
        given.push_back(name);
        for (std::string const& value : option->results())
            if (option->get_type_size() > 0)
                given.push_back(value);
    }
    return given;
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
    replay.add_option("--html", options->page.path, "Write a page for people, too")
        ->type_name("FILE");
    replay
        .add_option("--system", options->page.system,
                    "Name of the telephone system, for the page\n(default: this computer's)")
        ->type_name("NAME");
    CLI::Option* const policy =
        replay
            .add_option(
                "--policy", options->page.policy,
                "Prove the claims of this file about the rules,\nas \"prove --file\" takes them; "
                "with --as-of history\nabout all rules from the first to the last call")
            ->type_name("POLICY");
    CLI::Option* const asOf = AddText(
        replay, "--as-of", "history|WHEN",
        "Decide each call by the rules that the file had then,\nor all of them by those of a time",
        [options](std::string const& text) { options->asOf = text; });
    AddTruth(replay, options->truth);
    CLI::Option* const each =
        replay.add_flag("--each", options->each, "Print each call with its decision instead");
    replay.add_option("--key", options->key, "With --each: print this column first")
        ->type_name("COLUMN")
        ->needs(each);
    replay
        .add_flag("--partial", options->isPartial, "Print what was counted as one line for --merge")
        ->excludes(policy)
        ->excludes(each)
        ->excludes(distinct);
    replay.add_option("--merge", options->parts, "Add up what --partial printed")
        ->type_name("PARTS")
        ->excludes(each)
        ->excludes(asOf)
        ->excludes(against);
    AddNumber(replay, "--jobs", "N", "Threads; without it one for each processor", 1,
              [options](std::uint32_t jobs) { options->jobs = jobs; });
    replay.add_flag("--strict", options->strict, "Exit with 1 when a line cannot be read");
    replay.parse_complete_callback([options, &replay] { options->given = GivenOptions(replay); });
}

} // namespace callrecordingctl
