// Gathers what status prints.

#include "commands/StatusReport.h"

#include <algorithm>
#include <filesystem>

#include <fmt/format.h>
#include <host/AtomicFile.h>

#include "Failure.h"
#include "Rules.h"
#include "administration/check/FileFindings.h"
#include "administration/history/HistoryFile.h"
#include "administration/history/RuleTimeline.h"
#include "administration/history/When.h"
#include "administration/inspection/Digest.h"
#include "output/EditStep.h"
#include "output/Screen.h"
#include "text/Printable.h"

namespace callrecordingctl {
namespace {

void FindRules(std::string const& text, StatusReport& status) {
    try {
        std::vector<StoredRule> const rules = StoredRulesOf(text, status.path);
        status.rules = rules.size();
        status.on = static_cast<std::size_t>(
            std::count_if(rules.begin(), rules.end(), [](StoredRule const& stored) {
                return stored.rule.recording_rule_state == RULE_ENABLED;
            }));
        for (FileFinding const& finding : FindFaults(rules, CheckOptions()))
            ++(IsNote(finding) ? status.notes : status.findings[std::string(finding.kind)]);
    } catch (std::runtime_error const& error) {
        status.problem = error.what();
    }
}

HistoryExtent FindHistory(std::string const& path) {
    HistoryExtent extent;
    try {
        RuleTimeline timeline(path);
        for (HistoryEntry const& entry : History(path).Entries(timeline.TextNow())) {
            ++extent.edits;
            extent.last = entry;
            if (!extent.first)
                extent.first = entry;
        }
        // The oldest states go first.
        for (RuleEra const& era : timeline.Eras()) {
            if (timeline.TextOf(era))
                break;
            extent.statesSince = era.to;
        }
        if (extent.edits > 0)
            extent.bytes = std::filesystem::file_size(HistoryPath(path));
    } catch (std::exception const& error) {
        extent.problem = error.what();
    }
    return extent;
}

std::string FindingsText(StatusReport const& status) {
    std::size_t count = 0;
    std::string kinds;
    for (auto const& [kind, number] : status.findings) {
        count += number;
        kinds += fmt::format("{}{} {}", kinds.empty() ? "" : ", ", number, kind);
    }
    std::replace(kinds.begin(), kinds.end(), '_', ' ');
    std::string const found =
        count == 0 ? "nothing found" : fmt::format("{} found ({})", count, kinds);
    return status.notes == 0 ? found
                             : fmt::format("{}, {} {}", found, status.notes,
                                           status.notes == 1 ? "note" : "notes");
}

std::string HistoryText(HistoryExtent const& history) {
    if (!history.problem.empty())
        return "cannot be read: " + history.problem;
    if (history.edits == 0)
        return "no edit is recorded yet";
    std::string text =
        fmt::format("{} {} since {}, {} KiB", history.edits, history.edits == 1 ? "edit" : "edits",
                    WhenText(history.first->seconds), (history.bytes + 1023) / 1024);
    if (history.statesSince)
        text += fmt::format("; the rules of the time before {} are not kept any more",
                            WhenText(*history.statesSince));
    return text;
}

void PrintItem(char const* name, std::string const& text) {
    constexpr std::size_t kColumn = 11;
    std::string line = Wrapped(std::string(kColumn, ' ') + Printable(text), kColumn);
    PrintText(line.replace(0, std::string(name).size(), name));
}

nlohmann::ordered_json ToJson(std::optional<HistoryEntry> const& entry) {
    if (!entry)
        return nullptr;
    return {{"number", entry->number},        {"time", WhenText(entry->seconds)},
            {"user", entry->note.user},       {"command", entry->note.command},
            {"message", entry->note.message}, {"outside", entry->IsOutside()}};
}

} // namespace

StatusReport FindStatus(std::string const& path) {
    StatusReport status;
    status.path = path;
    status.isMissing = !HasRuleFile(path);
    std::string text;
    try {
        text = HostPlatform::ReadFile(path).text;
    } catch (std::exception const& error) {
        throw Failure(kExitUnreadable, error.what());
    }
    status.digest = DigestOf(text);
    FindRules(text, status);
    status.history = FindHistory(path);
    return status;
}

void PrintStatus(StatusReport const& status) {
    PrintItem("rule file",
              fmt::format("{}{}, state {}", status.path, status.isMissing ? " (not there)" : "",
                          StateToken(status.digest)));
    if (!status.problem.empty()) {
        PrintItem("rules", "cannot be read: " + status.problem);
    } else {
        PrintItem("rules", fmt::format("{}: {} on, {} off", status.rules, status.on,
                                       status.rules - status.on));
        PrintItem("check", FindingsText(status));
    }
    if (status.history.last)
        PrintItem("last edit", EditName(*status.history.last));
    PrintItem("history", HistoryText(status.history));
}

nlohmann::ordered_json ToJson(StatusReport const& status) {
    nlohmann::ordered_json json{{"file", status.path},
                                {"file_state", StateToken(status.digest)},
                                {"file_digest", status.digest},
                                {"problem", status.problem},
                                {"rules", nullptr},
                                {"on", nullptr},
                                {"findings", nullptr},
                                {"notes", nullptr},
                                {"last_edit", ToJson(status.history.last)}};
    if (status.problem.empty()) {
        json["rules"] = status.rules;
        json["on"] = status.on;
        json["findings"] = status.findings;
        json["notes"] = status.notes;
    }
    HistoryExtent const& history = status.history;
    json["history"] = {{"edits", history.edits},
                       {"since", nullptr},
                       {"rules_since", nullptr},
                       {"bytes", history.bytes},
                       {"problem", history.problem}};
    if (history.first)
        json["history"]["since"] = WhenText(history.first->seconds);
    if (history.statesSince)
        json["history"]["rules_since"] = WhenText(*history.statesSince);
    return json;
}

} // namespace callrecordingctl
