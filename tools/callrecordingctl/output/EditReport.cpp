// The sentences and the JSON that report on an edit.

#include "output/EditReport.h"

#include <fmt/format.h>

#include "administration/inspection/RuleNames.h"
#include "model/RuleSides.h"
#include "output/ReplayText.h"
#include "output/RuleText.h"
#include "output/ShellText.h"
#include "output/Table.h"
#include "text/Printable.h"

namespace callrecordingctl {
namespace {

bool DifferInStateOnly(Rule before, Rule const& after) {
    before.recording_rule_state = after.recording_rule_state;
    return AreEqual(before, after);
}

/// More than these are a list, and nobody reads it unless asked to.
constexpr std::size_t kMostSentences = 20;

/// So and so many rules were added, changed and so on.
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
    char const* const prefix = options.dryRun ? "dry run: " : "";
    std::size_t meant = 0;
    std::size_t others = 0;
    for (Change const& change : changes) {
        ++(change.isMeant ? meant : others);
        if (!options.verbose && (!change.isMeant || meant > kMostSentences))
            continue;
        fmt::print("{}{}\n", prefix, Printable(Sentence(change, options.count)));
        if (change.after != nullptr || options.dryRun)
            continue;
        if (auto const line = AddCommandFor(*change.before, change.beforePosition, context))
            fmt::print("  to have it back: {}\n", Printable(*line));
        else
            fmt::print("  to have it back: callrecordingctl undo\n"); // No options say it.
    }
    if (options.verbose)
        return;
    if (meant > kMostSentences)
        fmt::print("{}and {} more; -v tells each\n{}{}\n", prefix, meant - kMostSentences, prefix,
                   Summary(changes));
    if (others > 0)
        fmt::print("{}{} {} made room and changed identifiers; -v tells each\n", prefix, others,
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

void ReportEdit(std::vector<Change> const& changes, ReportOptions const& options,
                Context const& context) {
    if (context.json)
        return options.replay == nullptr
                   ? PrintJson(ChangesToJson(changes))
                   : PrintJson({{"changes", ChangesToJson(changes)},
                                {"replay",
                                 DifferencesToJson(options.replay->report, options.replay->before,
                                                   options.replay->after)}});
    PrintSentences(changes, options, context);
    if (changes.empty())
        fmt::print("no rule changes\n");
    else if (options.dryRun)
        PrintTable(changes, options.verbose);
    if (options.replay != nullptr)
        PrintDifferences(options.replay->report, options.replay->before, options.replay->after,
                         {"BEFORE", "AFTER", "the rules after the edit"});
}

} // namespace callrecordingctl
