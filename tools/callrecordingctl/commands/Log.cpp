// log: who changed which rules, and when.

#include <algorithm>
#include <memory>

#include <fmt/format.h>

#include "CommandLine.h"
#include "administration/edit/Changes.h"
#include "administration/history/History.h"
#include "administration/history/When.h"
#include "administration/inspection/Digest.h"
#include "administration/inspection/ReadRules.h"
#include "commands/Registry.h"
#include "output/EditReport.h"
#include "output/RuleText.h"
#include "output/Table.h"
#include "text/Printable.h"

namespace callrecordingctl {
namespace {

constexpr char kHelp[] =
    R"(Prints the edits, the last one first. An edit made around callrecordingctl, by
hand or by a telephony process, shows as such.
Example: callrecordingctl log --since monday
)";

struct Options {
    std::optional<std::int64_t> since;
    std::optional<std::int32_t> id;
    std::optional<std::int64_t> keep; // In MiB.
    bool verbose = false;
};

/// An entry with the rules before and after it; none where the history no longer has them.
struct Step {
    HistoryEntry entry;
    std::optional<RuleList> before;
    std::optional<RuleList> after;
    std::vector<Change> changes;
};

class LogReader {
  public:
    explicit LogReader(std::string const& path)
        : current_(HasRuleFile(path) ? ReadInput(path) : ""), history_(path, false) {}

    std::vector<HistoryEntry> Entries() { return history_.Entries(current_); }

    Step Read(HistoryEntry const& entry) {
        Step step{entry, RulesAt(entry.before), RulesAt(entry.after), {}};
        if (step.before && step.after)
            step.changes = ChangesBetween(*step.before, *step.after);
        return step;
    }

  private:
    /// A state that cannot be read as rules is as good as one that is not kept.
    std::optional<RuleList> RulesAt(std::string const& digest) {
        std::optional<std::string> text = history_.TextOf(digest);
        if (!text && DigestOf(current_) == digest)
            text = current_;
        try {
            return text ? std::optional(RulesOf(*text, digest)) : std::nullopt;
        } catch (Failure const&) {
            return std::nullopt;
        }
    }

    std::string current_;
    History history_;
};

bool IsAbout(Change const& change, std::int32_t id) {
    auto const hasId = [id](Rule const* rule) {
        return rule != nullptr && rule->callrecordingrule_id == id;
    };
    return change.isMeant && (hasId(change.before) || hasId(change.after));
}

void Print(Step const& step, bool verbose) {
    HistoryEntry const& entry = step.entry;
    std::string const number = entry.number > 0 ? std::to_string(entry.number) : "-";
    fmt::print("{:<4} {}  {}\n", number, WhenText(entry.seconds),
               Printable(entry.IsOutside() ? "edited around callrecordingctl"
                                           : entry.user + ": " + entry.command));
    if (!step.before || !step.after)
        fmt::print("     the rules are not kept any more, or cannot be read\n");
    else if (step.changes.empty())
        fmt::print("     no rule changed; comments or other entries did\n");
    constexpr std::size_t kMost = 5;
    std::size_t told = 0;
    std::size_t others = 0;
    for (Change const& change : step.changes) {
        if (!verbose && (!change.isMeant || told == kMost)) {
            ++others;
            continue;
        }
        ++told;
        fmt::print("     {}\n", Printable(Sentence(change, step.after->size())));
    }
    if (others > 0)
        fmt::print("     and {} more {}; -v tells each\n", others, others == 1 ? "rule" : "rules");
}

nlohmann::ordered_json ToJson(Step const& step) {
    HistoryEntry const& entry = step.entry;
    return {{"number", entry.number},
            {"time", WhenText(entry.seconds)},
            {"user", entry.user},
            {"command", entry.command},
            {"outside", entry.IsOutside()},
            {"undone", entry.undone},
            {"digest_before", entry.before},
            {"digest_after", entry.after},
            {"changes", ChangesToJson(step.changes)}};
}

ExitCode Log(Context const& context, Options const& options) {
    if (options.keep) {
        RequireDirectory(context.path);
        History(context.path, true).KeepAtMost(*options.keep);
        return kExitYes;
    }
    LogReader reader(context.path);
    std::vector<HistoryEntry> entries = reader.Entries();
    std::reverse(entries.begin(), entries.end());
    auto document = nlohmann::ordered_json::array();
    bool isEmpty = true;
    for (HistoryEntry const& entry : entries) {
        if (options.since && entry.seconds < *options.since)
            continue;
        Step const step = reader.Read(entry);
        if (options.id &&
            std::none_of(step.changes.begin(), step.changes.end(),
                         [&](Change const& change) { return IsAbout(change, *options.id); }))
            continue;
        isEmpty = false;
        if (context.json)
            document.push_back(ToJson(step));
        else
            Print(step, options.verbose);
    }
    if (context.json)
        PrintJson(document);
    else if (isEmpty)
        Say("no edit is recorded{}", options.since || options.id ? " that fits" : "");
    return kExitYes;
}

} // namespace

void AddLog(CommandLine& line) {
    auto const options = std::make_shared<Options>();
    CLI::App& log = line.AddCommand(
        "log", "Show who changed which rules, and when", kHelp,
        [options](Context const& context) {
            try {
                return Log(context, *options);
            } catch (HistoryError const& error) {
                throw Failure(kExitUnreadable, error.what());
            }
        });
    AddText(
        log, "--since", "WHEN", kWhenHelp,
        [options](std::string const& text) { options->since = ParseTime("--since", text); });
    AddNumber(
        log, "--rule", "ID", "Only edits of the rule that had this identifier", 0,
        [options](std::uint32_t id) { options->id = static_cast<std::int32_t>(id); });
    AddNumber(
        log, "--keep", "MIB",
        "Print nothing; from the next edit on, drop the\noldest edits beyond so much (default: 16)",
        1, [options](std::uint32_t mebibytes) { options->keep = mebibytes; });
    log.add_flag("-v,--verbose", options->verbose, "Tell every rule that changed");
}

} // namespace callrecordingctl
