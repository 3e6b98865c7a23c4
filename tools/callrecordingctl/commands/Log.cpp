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
#include "database/RuleFileLock.h"
#include "output/EditReport.h"
#include "output/RuleText.h"
#include "output/Table.h"
#include "text/Printable.h"

namespace callrecordingctl {
namespace {

constexpr char kHelp[] =
    R"(Prints the edits, the last one first. A change outside the history (by hand, by
a telephony process, or by an edit that could not be recorded) is shown as such,
with the time by which it was made.
Example: callrecordingctl log --since monday
)";

struct Options {
    std::optional<std::int64_t> since;
    std::optional<std::int32_t> id;
    std::optional<std::int64_t> keep; // In MiB.
    bool verbose = false;
};

/// The rules in one state of the file, or why they are not known.
struct State {
    std::optional<RuleList> rules;
    std::string problem;
};

/// An edit with what it changed.
struct Step {
    HistoryEntry const& entry;
    std::int64_t uncertain; // The number of the edit before whose changes are in these, too; or 0.
    std::string const& problem;
    std::vector<Change> const& changes;
    std::size_t count; // How many rules there were afterwards.
};

/// Reads the states of the file, each once if they are asked for in their order.
class StateReader {
  public:
    StateReader(History& history, std::string const& current)
        : history_(history), current_(current), currentDigest_(DigestOf(current)) {}

    /// The changes between two states, or why they are not known. Good until the next call.
    std::vector<Change> Changes(HistoryEntry const& entry) {
        if (entry.before != after_.first)
            after_ = {entry.before, Read(entry.before)};
        before_ = std::move(after_);
        after_ = {entry.after, Read(entry.after)};
        if (!before_.second.rules || !after_.second.rules)
            return {};
        return ChangesBetween(*before_.second.rules, *after_.second.rules);
    }

    std::string const& Problem() const {
        return before_.second.rules ? after_.second.problem : before_.second.problem;
    }

    std::size_t Count() const { return after_.second.rules ? after_.second.rules->size() : 0; }

  private:
    State Read(std::string const& digest) {
        std::string const name = "state " + StateToken(digest);
        try {
            auto const text =
                digest == currentDigest_ ? std::optional(current_) : history_.GlanceAt(digest);
            if (text)
                return {RulesOf(*text, name), ""};
            return {std::nullopt, fmt::format("what changed is not known: the {} of the rule file "
                                              "is not kept",
                                              name)};
        } catch (std::exception const& error) {
            return {std::nullopt, fmt::format("what changed is not known: {}", error.what())};
        }
    }

    History& history_;
    std::string const& current_;
    std::string const currentDigest_;
    std::pair<std::string, State> before_, after_; // With their digests.
};

bool IsAbout(Change const& change, std::int32_t id) {
    auto const hasId = [id](Rule const* rule) {
        return rule != nullptr && rule->callrecordingrule_id == id;
    };
    return change.isMeant && (hasId(change.before) || hasId(change.after));
}

std::string Heading(HistoryEntry const& entry) {
    std::string const number = entry.number > 0 ? std::to_string(entry.number) : "-";
    return fmt::format("{:<4} {}  {}\n", number, WhenText(entry.seconds),
                       Printable(entry.IsOutside() ? "changed outside the history by then"
                                                   : entry.note.user + ": " + entry.note.command));
}

std::string Sentences(Step const& step, bool verbose) {
    constexpr std::size_t kMost = 5;
    std::string text;
    std::size_t shown = 0;
    std::size_t others = 0;
    for (Change const& change : step.changes) {
        if (!verbose && (!change.isMeant || shown == kMost)) {
            ++others;
            continue;
        }
        ++shown;
        text += fmt::format("     {}\n", Printable(Sentence(change, step.count)));
    }
    if (others > 0)
        text += fmt::format("     and {} more {}; -v shows each\n", others,
                            others == 1 ? "rule" : "rules");
    return text;
}

std::string ToText(Step const& step, bool verbose) {
    std::string text = Heading(step.entry);
    if (step.entry.state == EditState::Unknown)
        text += "     it is not known whether this was saved; it was to do this:\n";
    if (step.uncertain > 0)
        text += fmt::format("     together with edit {}, if that was saved:\n", step.uncertain);
    if (!step.problem.empty())
        return text + fmt::format("     {}\n", Printable(step.problem));
    if (step.changes.empty())
        return text + "     no rule changed; comments or other entries did\n";
    return text + Sentences(step, verbose);
}

char const* StateName(EditState state) {
    switch (state) {
    case EditState::Unknown: return "unknown";
    case EditState::Outside: return "outside";
    default: return "saved";
    }
}

nlohmann::ordered_json ToJson(Step const& step) {
    HistoryEntry const& entry = step.entry;
    return {{"number", entry.number},
            {"time", WhenText(entry.seconds)},
            {"user", entry.note.user},
            {"command", entry.note.command},
            {"outside", entry.IsOutside()},
            {"state", StateName(entry.state)},
            {"undone", entry.note.undone},
            {"digest_before", entry.before},
            {"digest_after", entry.after},
            {"problem", step.problem},
            {"changes", ChangesToJson(step.changes)}};
}

/// Calls show with the steps that options ask for, in their order.
template <typename Show>
void ForEachStep(std::string const& path, Options const& options, Show show) {
    RequireDirectory(path);
    History history(path);
    Snapshot const now = history.Read();
    StateReader states(history, now.text);
    std::int64_t uncertain = 0;
    for (HistoryEntry const& entry : now.entries) {
        std::int64_t const withEdit = entry.IsOutside() ? uncertain : 0;
        uncertain = entry.state == EditState::Unknown ? entry.number : 0;
        if (options.since && entry.seconds < *options.since)
            continue;
        std::vector<Change> const changes = states.Changes(entry);
        if (!options.id || std::any_of(changes.begin(), changes.end(), [&](Change const& change) {
                return IsAbout(change, *options.id);
            }))
            show(Step{entry, withEdit, states.Problem(), changes, states.Count()});
    }
}

void PrintAsText(std::string const& path, Options const& options) {
    std::vector<std::string> steps;
    ForEachStep(path, options,
                [&](Step const& step) { steps.push_back(ToText(step, options.verbose)); });
    for (auto step = steps.rbegin(); step != steps.rend(); ++step)
        fmt::print("{}", *step);
    if (steps.empty())
        Say("no edit is recorded{}", options.since || options.id ? " that fits" : "");
}

void PrintAsJson(std::string const& path, Options const& options) {
    std::vector<nlohmann::ordered_json> steps;
    ForEachStep(path, options, [&](Step const& step) { steps.push_back(ToJson(step)); });
    std::reverse(steps.begin(), steps.end());
    PrintJson(nlohmann::ordered_json(steps));
}

ExitCode Keep(std::string const& path, std::int64_t mebibytes) {
    RequireDirectory(path);
    try {
        RuleFileLock const lock(path, std::chrono::seconds(5));
        HistoryWriter(path).KeepAtMost(mebibytes);
        return kExitYes;
    } catch (std::exception const& error) {
        throw Failure(kExitUnsaved, fmt::format("{}; nothing was changed", error.what()));
    }
}

ExitCode Log(Context const& context, Options const& options) {
    if (options.keep)
        return Keep(context.path, *options.keep);
    try {
        context.json ? PrintAsJson(context.path, options) : PrintAsText(context.path, options);
        return kExitYes;
    } catch (std::runtime_error const& error) {
        throw Failure(kExitUnreadable, error.what());
    }
}

} // namespace

void AddLog(CommandLine& line) {
    auto const options = std::make_shared<Options>();
    CLI::App& log =
        line.AddCommand("log", "Show who changed which rules, and when", kHelp, options, Log);
    AddText(
        log, "--since", "WHEN", kWhenHelp,
        [options](std::string const& text) { options->since = ParseTime("--since", text); });
    AddNumber(
        log, "--rule", "ID", "Only edits of the rule that had this identifier", 0,
        [options](std::uint32_t id) { options->id = static_cast<std::int32_t>(id); });
    AddNumber(
        log, "--keep", "MIB",
        "Print nothing, but limit the size of the history,\nfrom the next edit on (default: 16); "
        "the oldest states\nof the rules go first",
        1, [options](std::uint32_t mebibytes) { options->keep = mebibytes; });
    log.add_flag("-v,--verbose", options->verbose, "Show every rule that changed");
}

} // namespace callrecordingctl
