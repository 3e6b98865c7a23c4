/// @file
/// Running an edit: lock, read, plan, save, verify, report.

#include "EditPlan.h"

#include <algorithm>
#include <filesystem>
#include <tuple>

#include <fmt/format.h>

#include "EditLock.h"
#include "RuleText.h"
#include "Table.h"

namespace callrecordingctl {
namespace {

namespace fs = std::filesystem;

/// One rule before and after an edit; none where it is new or deleted.
struct Change {
    Rule const* before = nullptr;
    std::size_t beforePosition = 0;
    Rule const* after = nullptr;
    std::size_t afterPosition = 0;
};

auto Fields(Rule const& rule) {
    return std::tie(rule.caller_pattern, rule.caller_call_type, rule.called_pattern,
                    rule.called_call_type, rule.call_recording_type, rule.record_to,
                    rule.recording_duration, rule.description);
}

bool IsSame(Rule const& left, Rule const& right) {
    return left.callrecordingrule_id == right.callrecordingrule_id &&
           left.recording_rule_state == right.recording_rule_state && Fields(left) == Fields(right);
}

/// Why the file cannot be saved. The library only says that it failed, so the file is saved as it
/// is: the platform's class then says what the matter is.
std::string WhyUnsaved() {
    try {
        if (HasRuleFile())
            OpenRuleFile()->Save(true, nullptr);
    } catch (std::exception const& error) {
        return error.what();
    }
    return RuleFilePath() +
           ": the edit did not take effect; \"callrecordingctl check\" may say what "
           "is wrong with the file";
}

[[noreturn]] void FailUnsaved(std::size_t done, std::size_t steps) {
    std::string message = WhyUnsaved();
    if (done > 0)
        message +=
            fmt::format("\n{} of the {} steps of the edit were saved; \"callrecordingctl list\" "
                        "shows where it stands",
                        done, steps);
    throw Failure(EXIT_CODE_UNSAVED, message);
}

/// Runs the steps, and makes sure that the file then holds what was planned.
void RunSteps(RuleStore& store, Plan const& plan) {
    RuleList rules;
    for (std::size_t i = 0; i < plan.steps.size(); ++i) {
        auto const& [run, index, expected] = plan.steps[i];
        bool const isDone = run(store.Database());
        rules = store.Reload();
        if (!isDone || (index && (*index >= rules.size() || !IsSame(rules[*index], expected))))
            FailUnsaved(i, plan.steps.size());
    }
    auto const isHeld = [](Rule const& rule, PlannedRule const& planned) {
        return IsSame(rule, planned.rule);
    };
    if (!std::equal(rules.begin(), rules.end(), plan.after.begin(), plan.after.end(), isHeld))
        FailUnsaved(0, 0);
}

void MakeDirectory(fs::path const& directory) {
    std::error_code error;
    if (fs::create_directory(directory, error))
        Say("{}: made this directory\n", directory.string());
    if (error)
        throw Failure(EXIT_CODE_UNSAVED,
                      fmt::format("{}: cannot be made: {}", directory.string(), error.message()));
}

/// The rule that the edit is about, then the others that it changes, in order of position.
std::vector<Change> Changes(RuleList const& before, Plan const& plan) {
    std::vector<Change> changes;
    std::vector<bool> isKept(before.size(), false);
    for (std::size_t i = 0; i < plan.after.size(); ++i) {
        auto const& [rule, origin] = plan.after[i];
        Change change{nullptr, 0, &rule, i + 1};
        if (origin) {
            isKept[*origin] = true;
            change.before = &before[*origin];
            change.beforePosition = *origin + 1;
        }
        if (i == plan.subject)
            changes.insert(changes.begin(), change);
        else if (change.before == nullptr || !IsSame(*change.before, rule))
            changes.push_back(change);
    }
    for (std::size_t i = 0; i < before.size(); ++i)
        if (!isKept[i])
            changes.push_back({&before[i], i + 1, nullptr, 0});
    return changes;
}

std::string Sides(Rule const& rule) {
    return fmt::format("from {} to {}", SideText(rule.caller_pattern, rule.caller_call_type),
                       SideText(rule.called_pattern, rule.called_call_type));
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
    if (IsSame(*change.before, after))
        return fmt::format("rule {} is as it was: {}, {}", id, StateText(after), Sides(after));
    if (Fields(*change.before) == Fields(after))
        return fmt::format("rule {} is now {}: {}", id, StateText(after), Sides(after));
    return fmt::format("rule {} changed: {}", id, Sides(after));
}

void PrintChanges(std::vector<Change> const& changes, std::size_t count, bool dryRun) {
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
        fmt::print("{}{}\n", dryRun ? "dry run: " : "", Printable(Sentence(change, count)));
        add("before", change.before, change.beforePosition);
        add("after", change.after, change.afterPosition);
    }
    if (dryRun)
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

void Report(RuleList const& before, Plan const& plan, EditOptions const& options) {
    std::vector<Change> const changes = Changes(before, plan);
    if (options.json)
        PrintChangesAsJson(changes);
    else
        PrintChanges(changes, plan.after.size(), options.dryRun);
}

} // namespace

ExitCode RunEdit(EditOptions const& options, Planner const& planner) {
    bool const hasFile = HasRuleFile();
    std::optional<EditLock> lock;
    if (!options.dryRun) {
        MakeDirectory(fs::path(RuleFilePath()).parent_path());
        lock.emplace(RuleFilePath() + ".lock", options.patience);
    }
    RuleStore store;
    RuleList const before = hasFile || lock ? store.Reload() : RuleList();
    Plan const plan = planner(before);
    if (lock)
        RunSteps(store, plan);
    lock.reset();
    Report(before, plan, options);
    return EXIT_CODE_YES;
}

} // namespace callrecordingctl
