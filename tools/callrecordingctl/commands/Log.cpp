// log: who changed which rules, and when.

#include <algorithm>
#include <memory>
#include <set>

#include <fmt/format.h>

#include "CommandLine.h"
#include "administration/edit/RuleTrail.h"
#include "administration/history/History.h"
#include "administration/history/When.h"
#include "commands/RulesOfStates.h"
#include "database/RuleFileLock.h"
#include "output/EditStep.h"
#include "output/Pager.h"
#include "output/RuleText.h"

namespace callrecordingctl {
namespace {

constexpr char kHelp[] =
    R"(Prints the edits, the last one first. A change outside the history (by hand, by
a telephony process, or by an edit that could not be recorded) is shown as such,
with the time by which it was made.
--rule shows what became of one rule, wherever it stood and whatever identifier it
had at the time. A rule that came back as it had been is the same one.
Example: callrecordingctl log --since monday -p
)";

struct Options {
    std::optional<std::int64_t> since, until;
    std::optional<std::string> user;
    std::optional<std::int32_t> id;
    std::optional<std::size_t> count;
    std::optional<std::int64_t> keep; // In MiB.
    StepStyle style;

    bool IsFilter() const { return since || until || user || id; }
};

/// Under sudo an edit has two users: the caller, and the one in whose place he acts.
bool IsBy(HistoryEntry const& entry, std::string const& user) {
    std::string const& by = entry.note.user;
    std::size_t const as = by.find(" as ");
    return !entry.IsOutside() &&
           (by == user ||
            (as != std::string::npos && (by.substr(0, as) == user || by.substr(as + 4) == user)));
}

bool IsWanted(HistoryEntry const& entry, Options const& options) {
    return (!options.since || entry.seconds >= *options.since) &&
           (!options.until || entry.seconds < *options.until) &&
           (!options.user || IsBy(entry, *options.user));
}

/// Follows the rule of --rule back from the last state that can be read.
class Follower {
  public:
    Follower(RulesOfStates& states, std::int32_t id) : states_(states), id_(id) {}

    /// What the edit did to the rule, or nothing.
    std::optional<Change> Follow(HistoryEntry const& entry) {
        if (entry.state == EditState::Unknown)
            return std::nullopt; // The change from outside that follows it tells what is known.
        if (!trail_) {
            RuleList const* const last = states_.Find(entry.after);
            if (last == nullptr)
                return std::nullopt;
            trail_.emplace(*last, id_);
        }
        RuleList const* const before = states_.Find(entry.before);
        isBlurred_ = isGap_;
        isGap_ = before == nullptr;
        return isGap_ ? std::nullopt : trail_->StepBack(*before);
    }

    /// Whether what Follow returned may have been done by a later edit, whose rules cannot be read.
    bool IsBlurred() const { return isBlurred_; }

    /// Whether the beginning of the rule is out of sight.
    bool EndsInGap() const { return isGap_; }

  private:
    RulesOfStates& states_;
    std::int32_t id_;
    std::optional<RuleTrail> trail_;
    bool isGap_ = false;
    bool isBlurred_ = false;
};

/// Calls show with the steps that options ask for, the last one first. Returns how many there were.
template <typename Show>
std::size_t ForEachStep(std::string const& path, Options const& options, Show show) {
    RequireDirectory(path);
    History history(path);
    Snapshot const now = history.Read();
    RulesOfStates states(history, now.text);
    std::optional<Follower> follower;
    if (options.id)
        follower.emplace(states, *options.id);
    std::size_t shown = 0;
    std::size_t const most = options.count.value_or(now.entries.size());
    for (std::size_t i = now.entries.size(); i-- > 0 && shown < most;) {
        HistoryEntry const& entry = now.entries[i];
        std::optional<Change> about;
        if (follower && !(about = follower->Follow(entry)))
            continue;
        if (!IsWanted(entry, options))
            continue;
        EditStep step{entry, states.ChangesOf(entry), states.ProblemOf(entry),
                      states.CountAfter(entry)};
        if (entry.IsOutside() && i > 0 && now.entries[i - 1].state == EditState::Unknown)
            step.uncertain = now.entries[i - 1].number;
        step.about = about;
        step.isBlurred = follower && follower->IsBlurred();
        show(step);
        ++shown;
    }
    if (follower && follower->EndsInGap() && shown < most)
        Say("what was done to the rule before that is not known: the rules of that time are not "
            "kept, or cannot be read");
    return shown;
}

void PrintAsText(std::string const& path, Options const& options) {
    std::string text;
    std::size_t const count = ForEachStep(
        path, options, [&](EditStep const& step) { text += ToText(step, options.style); });
    Page(text);
    if (count == 0)
        Say("no edit is recorded{}", options.IsFilter() ? " that fits" : "");
}

void PrintAsJson(std::string const& path, Options const& options) {
    auto steps = nlohmann::ordered_json::array();
    ForEachStep(path, options, [&](EditStep const& step) { steps.push_back(ToJson(step)); });
    PrintJson(steps);
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
    } catch (Failure const&) {
        throw;
    } catch (std::runtime_error const& error) {
        throw Failure(kExitUnreadable, error.what());
    }
}

} // namespace

void AddLog(CommandLine& line) {
    auto const options = std::make_shared<Options>();
    CLI::App& log =
        line.AddCommand("log", "Show who changed which rules, and when", kHelp, options, Log);
    log.add_flag("-p,--patch", options->style.hasFields,
                 "Show what changed in each rule, old and new");
    AddNumber(
        log, "-n", "N", "Only the last N edits that fit the other options", 1,
        [options](std::uint32_t count) { options->count = count; });
    AddText(
        log, "--since", "WHEN", std::string("Only edits from this time on. ") + kWhenHelp,
        [options](std::string const& text) { options->since = ParseTime("--since", text); });
    AddText(
        log, "--until", "WHEN", "Only edits before this time",
        [options](std::string const& text) { options->until = ParseTime("--until", text); });
    AddText(
        log, "--user", "NAME", "Only edits of this user",
        [options](std::string const& name) { options->user = name; });
    AddNumber(log, "--rule", "ID",
              "Only what was done to the rule that has this\nidentifier now, or had it last", 0,
              [options](std::uint32_t id) { options->id = static_cast<std::int32_t>(id); });
    log.add_flag("-v,--verbose", options->style.isVerbose,
                 "Show every rule that changed, and whole commands");
    AddNumber(
        log, "--keep", "MIB",
        "Print nothing, but limit the size of the history,\nfrom the next edit on (default: 16); "
        "the oldest states\nof the rules go first",
        1, [options](std::uint32_t mebibytes) { options->keep = mebibytes; });
}

} // namespace callrecordingctl
