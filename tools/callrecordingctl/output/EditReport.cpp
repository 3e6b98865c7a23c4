// The sentences and the JSON that report on an edit.

#include "output/EditReport.h"

#include <fmt/format.h>

#include "model/RuleSides.h"
#include "output/RuleText.h"
#include "output/Table.h"

namespace callrecordingctl {
namespace {

std::string Sides(Rule const& rule) {
    return fmt::format("from {} to {}", SideText(rule.caller_pattern, rule.caller_call_type),
                       SideText(rule.called_pattern, rule.called_call_type));
}

bool DifferInStateOnly(Rule before, Rule const& after) {
    before.recording_rule_state = after.recording_rule_state;
    return CallRecordingUtils::AreEqual(before, after);
}

std::string Sentence(Change const& change, std::size_t count) {
    if (change.after == nullptr)
        return fmt::format("rule {} deleted: {}", change.before->callrecordingrule_id,
                           Sides(*change.before));
    Rule const& after = *change.after;
    std::int32_t const id = after.callrecordingrule_id;
    if (change.before == nullptr)
        return fmt::format("rule {} added at position {} of {}: {}", id, change.afterPosition,
                           count, Sides(after));
    if (change.before->callrecordingrule_id != id)
        return fmt::format("rule {} is now rule {}, at position {} of {}",
                           change.before->callrecordingrule_id, id, change.afterPosition, count);
    if (CallRecordingUtils::AreEqual(*change.before, after))
        return fmt::format("rule {} is as it was: {}, {}", id, StateText(after), Sides(after));
    if (DifferInStateOnly(*change.before, after))
        return fmt::format("rule {} is now {}: {}", id, StateText(after), Sides(after));
    return fmt::format("rule {} changed: {}", id, Sides(after));
}

void PrintSentences(std::vector<Change> const& changes, std::size_t count, bool dryRun) {
    for (Change const& change : changes)
        fmt::print("{}{}\n", dryRun ? "dry run: " : "", Printable(Sentence(change, count)));
}

void PrintTable(std::vector<Change> const& changes) {
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
        add("before", change.before, change.beforePosition);
        add("after", change.after, change.afterPosition);
    }
    table.Print();
}

void PrintChangesAsJson(std::vector<Change> const& changes) {
    auto const json = [](Rule const* rule, std::size_t position) {
        return rule != nullptr ? ToJson(*rule, position) : nlohmann::ordered_json();
    };
    auto document = nlohmann::ordered_json::array();
    for (Change const& change : changes)
        document.push_back({{"before", json(change.before, change.beforePosition)},
                            {"after", json(change.after, change.afterPosition)}});
    PrintJson(document);
}

} // namespace

void ReportEdit(std::vector<Change> const& changes, std::size_t count, bool dryRun, bool json) {
    if (json)
        return PrintChangesAsJson(changes);
    PrintSentences(changes, count, dryRun);
    if (dryRun)
        PrintTable(changes);
}

} // namespace callrecordingctl
