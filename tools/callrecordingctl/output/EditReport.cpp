// Prints reports on edits.

#include "output/EditReport.h"

#include <fmt/format.h>

#include "administration/inspection/RuleNames.h"
#include "model/RuleSides.h"
#include "output/ComparisonText.h"
#include "output/ReplayText.h"
#include "output/RuleText.h"
#include "output/Screen.h"
#include "output/ShellText.h"
#include "output/Table.h"
#include "text/Printable.h"

namespace callrecordingctl {
namespace {

bool DifferInStateOnly(Rule before, Rule const& after) {
    before.recording_rule_state = after.recording_rule_state;
    return AreEqual(before, after);
}

/// Nobody reads more of them, unless with -v.
constexpr std::size_t kMostSentences = 20;

/// How many rules were added, changed, moved and deleted.
std::string Summary(std::vector<Change> const& changes) {
    std::size_t added = 0, deleted = 0, moved = 0, changed = 0;
    for (Change const& change : changes) {
        if (!change.isMeant)
            continue;
        if (change.before == nullptr)
            ++added;
        else if (change.after == nullptr)
            ++deleted;
        else if (AreEqual(*change.before, *change.after))
            ++moved;
        else
            ++changed;
    }
    return fmt::format("rules: {} added, {} changed, {} moved, {} deleted", added, changed, moved,
                       deleted);
}

void PrintSentences(std::vector<Change> const& changes, ReportOptions const& options,
                    Context const& context) {
    char const* const prefix = options.dryRun != nullptr ? "dry run: " : "";
    std::size_t meant = 0;
    std::size_t others = 0;
    auto const deleted = std::count_if(changes.begin(), changes.end(), [](Change const& change) {
        return change.after == nullptr;
    });
    for (Change const& change : changes) {
        ++(change.isMeant ? meant : others);
        if (!options.verbose && (!change.isMeant || meant > kMostSentences))
            continue;
        PrintLines("{}{}\n", prefix, Printable(Sentence(change, options.count)));
        if (change.after != nullptr || options.dryRun != nullptr || deleted > 1)
            continue;
        if (auto const line = AddCommandFor(*change.before, change.beforePosition, context))
            PrintText(WrappedCommand("  to bring it back: " + Printable(*line), 4));
        else
            PrintLines("  to bring it back: callrecordingctl undo\n"); // No options describe it.
    }
    if (deleted > 1 && options.dryRun == nullptr)
        PrintLines("  to bring them back: callrecordingctl undo\n");
    if (options.verbose)
        return;
    if (meant > kMostSentences)
        PrintLines("{}and {} more; -v shows each\n{}{}\n", prefix, meant - kMostSentences, prefix,
                   Summary(changes));
    if (others > 0)
        PrintLines("{}{} {} made room and changed identifiers; -v shows each\n", prefix, others,
                   others == 1 ? "rule" : "rules");
}

void PrintTable(std::vector<Change> const& changes, bool verbose) {
    std::vector<std::string> headers = ListHeaders();
    headers.insert(headers.begin(), "");
    Table table(headers, 7, 4);
    auto const add = [&table](char const* when, Rule const* rule, std::size_t position) {
        if (rule == nullptr)
            return;
        std::vector<std::string> row = ListRow(*rule, position);
        row.insert(row.begin(), when);
        table.Add(row);
    };
    for (Change const& change : changes) {
        if (!change.isMeant && !verbose)
            continue;
        add("before", change.before, change.beforePosition);
        add("after", change.after, change.afterPosition);
    }
    table.Print();
}

} // namespace

std::string Sentence(Change const& change, std::size_t count) {
    if (change.after == nullptr)
        return fmt::format("{} deleted: {}", NameOf(*change.before), SidesText(*change.before));
    Rule const& after = *change.after;
    std::string const name = NameOf(after);
    if (change.before == nullptr)
        return fmt::format("{} added at position {} of {}: {}", name, change.afterPosition, count,
                           SidesText(after));
    if (change.before->callrecordingrule_id != after.callrecordingrule_id &&
        change.beforePosition == change.afterPosition)
        return fmt::format("{} at position {} is now rule {}", NameOf(*change.before),
                           change.afterPosition, after.callrecordingrule_id);
    if (change.before->callrecordingrule_id != after.callrecordingrule_id)
        return fmt::format("{} is now rule {}, at position {} of {}", NameOf(*change.before),
                           after.callrecordingrule_id, change.afterPosition, count);
    bool const isEqual = AreEqual(*change.before, after);
    if (isEqual && change.beforePosition != change.afterPosition)
        return fmt::format("{} is at position {} of {} now, was {}", name, change.afterPosition,
                           count, change.beforePosition);
    if (isEqual)
        return fmt::format("{} is as it was: {}, {}", name, StateText(after), SidesText(after));
    if (DifferInStateOnly(*change.before, after))
        return fmt::format("{} is now {}: {}", name, StateText(after), SidesText(after));
    return fmt::format("{} changed: {}", name, SidesText(after));
}

std::vector<std::string> FieldLines(Change const& change) {
    constexpr char const* kNames[] = {"position",  "identifier", "state",
                                      "from",      "to",         "recording type",
                                      "record to", "duration",   "description"};
    auto const row = [](Rule const* rule, std::size_t position) {
        return rule != nullptr ? ListRow(*rule, position) : ListRow(Rule(), 0);
    };
    std::vector<std::string> const before = row(change.before, change.beforePosition);
    std::vector<std::string> const after = row(change.after, change.afterPosition);
    auto const line = [&](char sign, std::size_t i, std::string const& value) {
        return fmt::format("{} {} {}", sign, kNames[i], value.empty() ? "(empty)" : value);
    };
    std::vector<std::string> lines;
    bool const isBoth = change.before != nullptr && change.after != nullptr;
    constexpr std::size_t kFirstSetting = 2; // The sentence of a single rule has what is before.
    for (std::size_t i = isBoth ? 0 : kFirstSetting; i < before.size(); ++i) {
        if (isBoth && before[i] == after[i])
            continue;
        if (change.before != nullptr && (isBoth || !before[i].empty()))
            lines.push_back(line('-', i, before[i]));
        if (change.after != nullptr && (isBoth || !after[i].empty()))
            lines.push_back(line('+', i, after[i]));
    }
    return lines;
}

nlohmann::ordered_json ChangesToJson(std::vector<Change> const& changes) {
    auto const json = [](Rule const* rule, std::size_t position) {
        return rule != nullptr ? ToJson(*rule, position) : nlohmann::ordered_json();
    };
    auto document = nlohmann::ordered_json::array();
    for (Change const& change : changes)
        document.push_back({{"before", json(change.before, change.beforePosition)},
                            {"after", json(change.after, change.afterPosition)}});
    return document;
}

namespace {

nlohmann::ordered_json ToJson(std::vector<Change> const& changes, DryRun const& dryRun) {
    nlohmann::ordered_json json{{"changes", ChangesToJson(changes)}, {"calls", nullptr}};
    if (dryRun.calls)
        json["calls"] = ToJson(*dryRun.calls, dryRun.before, dryRun.after);
    if (dryRun.replay) {
        json["replay"] = DifferencesToJson(*dryRun.replay, dryRun.before, dryRun.after);
        json["replay"]["unreadable"] = UnreadableToJson(*dryRun.replay);
        json["replay"]["interrupted"] = dryRun.replay->isInterrupted;
    }
    return json;
}

void PrintCalls(DryRun const& dryRun) {
    if (dryRun.replay) {
        PrintDifferences(*dryRun.replay, dryRun.before, dryRun.after,
                         {"BEFORE", "AFTER", "the rules after the edit"});
        PrintProblems(*dryRun.replay);
    }
    if (dryRun.calls)
        PrintCallChanges(*dryRun.calls, dryRun.before, dryRun.after);
    else
        PrintLines("dry run: which calls are decided differently is unknown, since the file as it "
                   "is cannot be read\n");
}

} // namespace

void ReportEdit(std::vector<Change> const& changes, ReportOptions const& options,
                Context const& context) {
    DryRun const* const dryRun = options.dryRun;
    if (context.json)
        return PrintJson(dryRun != nullptr ? ToJson(changes, *dryRun) : ChangesToJson(changes));
    PrintSentences(changes, options, context);
    if (changes.empty())
        PrintLines("no rule changes\n");
    else if (dryRun != nullptr)
        PrintTable(changes, options.verbose);
    if (dryRun != nullptr)
        PrintCalls(*dryRun);
}

} // namespace callrecordingctl
