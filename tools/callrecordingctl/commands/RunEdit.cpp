// Running an edit: lock, read, change, save once, report.

#include "commands/RunEdit.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>

#include <fcntl.h>
#include <unistd.h>

#include <fmt/format.h>

#include "administration/history/History.h"
#include "administration/inspection/Digest.h"
#include "administration/inspection/ReadRules.h"
#include "commands/ReadingOptions.h"
#include "commands/RecordEdit.h"
#include "commands/WaitForServices.h"
#include "output/EditReport.h"

namespace callrecordingctl {
namespace {

namespace fs = std::filesystem;

/// So that the directory outlives a loss of power as the file in it does.
void MakeDurable(fs::path const& directory) {
    int const file = open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    bool const isDurable = file >= 0 && fsync(file) == 0;
    int const error = errno;
    if (file >= 0)
        close(file);
    if (!isDurable)
        throw Failure(kExitUnsaved, fmt::format("{}: cannot be made durable: {}",
                                                directory.string(), std::strerror(error)));
}

void MakeDirectory(fs::path const& directory) {
    std::error_code error;
    if (fs::is_directory(directory, error) || !fs::is_directory(directory.parent_path(), error))
        return; // What is missing then is not ours to make; reading says so.
    if (fs::create_directory(directory, error)) {
        MakeDurable(directory);
        MakeDurable(directory.parent_path());
        Say("{}: made this directory", directory.string());
    }
    if (error)
        throw Failure(kExitUnsaved,
                      fmt::format("{}: cannot be made: {}", directory.string(), error.message()));
}

/// What became of the rules since the state with this token, where the history still has it.
std::string WhatChanged(RuleEdit const& edit, std::string const& token) {
    try {
        auto const text = History(edit.Path()).TextOf(token);
        if (!text)
            return "";
        RuleList const then = RulesOf(*text, token);
        std::string told;
        for (Change const& change : ChangesBetween(then, edit.Before()))
            if (change.isMeant)
                told += "\n  " + Sentence(change, edit.Before().size());
        return told.empty() ? "\n  no rule has changed; comments or other entries have" : told;
    } catch (std::exception const&) {
        return ""; // That it is another one is known without it.
    }
}

DryRun FindEffects(RuleEdit& edit, EditOptions const& options, bool json) {
    static RuleList const none;
    bool const isMalformed = edit.Malformation().has_value();
    DryRun dryRun{isMalformed ? none : edit.Before(), edit.After(), {}, {}};
    if (!options.replay.paths.empty())
        dryRun.replay = ReplayEdit(options.replay, edit);
    if (!isMalformed)
        dryRun.calls =
            CompareCalls(dryRun.before, dryRun.after, json ? kAllPairs : kPairsOfRuleShown);
    return dryRun;
}

/// The exit code of a dry run: no if the call records hold nothing that can be read.
ExitCode CodeOf(DryRun const& dryRun) {
    if (!dryRun.replay)
        return kExitYes;
    if (dryRun.replay->isInterrupted)
        return kExitStopped;
    bool const isAllUnreadable = dryRun.replay->all.calls == 0 && dryRun.replay->unreadable > 0;
    return isAllUnreadable ? kExitNo : kExitYes;
}

/// Prints the report. An edit that was saved is done: that the report of it cannot be printed is
/// said, and is no failure.
void Report(RuleEdit& edit, EditOptions const& options, DryRun const* dryRun,
            Context const& context, bool isSaved) {
    // A reader that has gone must not end this process: the edit has been made.
    if (isSaved)
        std::signal(SIGPIPE, SIG_IGN);
    if (auto const malformation = edit.Malformation())
        Say("the file before could not be read as rules, so all rules count as added: {}",
            *malformation);
    std::string reason;
    try {
        ReportEdit(edit.Changes(), {edit.Count(), options.verbose, dryRun}, context);
        if (std::fflush(stdout) != 0)
            reason = std::strerror(errno);
    } catch (std::exception const& error) {
        reason = error.what();
    }
    if (isSaved)
        SayNote(WhoDecidesByThem(context.path));
    if (!reason.empty() && !isSaved)
        throw Failure(kExitUnsaved, "standard output cannot be written: " + reason);
    if (!reason.empty()) {
        Say("the edit was saved, but standard output cannot be written: {}", reason);
        std::fclose(stdout); // With what is left in it.
    }
}

} // namespace

std::unique_ptr<RuleFileLock> LockRules(std::string const& path, std::chrono::seconds patience) {
    try {
        using namespace std::chrono_literals;
        try {
            return std::make_unique<RuleFileLock>(path, 200ms);
        } catch (RuleFileLockTimeout const&) {
            if (patience.count() == 0)
                throw;
        }
        Say("{}: another client is editing; waiting up to {} s", path, patience.count());
        return std::make_unique<RuleFileLock>(path, patience);
    } catch (std::exception const& error) {
        throw Failure(kExitUnsaved, fmt::format("nothing was changed: {}", error.what()));
    }
}

void RequireState(RuleEdit const& edit, EditOptions const& options) {
    if (!options.ifState)
        return;
    std::string const& token = *options.ifState;
    std::string const digest = DigestOf(edit.TextBefore());
    bool const isToken = token.size() >= StateToken(digest).size();
    if (!isToken || digest.compare(0, token.size(), token) != 0)
        throw Failure(kExitChanged,
                      fmt::format("the rule file is another one by now: its state is {}, not {}; "
                                  "nothing was changed{}",
                                  StateToken(digest), token,
                                  isToken ? WhatChanged(edit, token) : ""));
}

ExitCode RunEdit(Context const& context, EditOptions const& options, Changer const& change) {
    fs::path const directory = fs::path(context.path).parent_path();
    std::unique_ptr<RuleFileLock> lock;
    RefuseMistakenDirectory(context.path);
    if (!options.dryRun) {
        MakeDirectory(directory);
        RequireDirectory(context.path);
        lock = LockRules(context.path, options.patience);
    }
    // Where a dry run misses the directory, a file in its place would be missing, too: no rules.
    RuleEdit edit(fs::exists(directory) ? context.path : directory.string());
    RequireState(edit, options);
    ExitCode const code = change(edit);
    bool const isSaved = lock && edit.IsChanged();
    if (isSaved)
        SaveAndRecord(edit, context, options.message);
    lock.reset();
    if (!options.dryRun) {
        Report(edit, options, nullptr, context, isSaved);
        return code;
    }
    DryRun const dryRun = FindEffects(edit, options, context.json);
    Report(edit, options, &dryRun, context, false);
    return code == kExitYes ? CodeOf(dryRun) : code;
}

void AddGuards(CLI::App& edit, EditOptions& options, CLI::Option* needed) {
    CLI::Option* const ifState = AddText(
        edit, "--if-state", "TOKEN",
        "Change nothing, with exit status 7, unless the\nfile is in this state, as list shows it",
        [&options](std::string const& token) { options.ifState = token; });
    CLI::Option* const wait = AddNumber(
        edit, "--wait", "SECONDS", "How long to wait for another client's edit\n(default: 5)", 0,
        [&options](std::uint32_t seconds) { options.patience = std::chrono::seconds(seconds); });
    CLI::Option* const message =
        AddText(edit, "-m,--message", "TEXT",
                "Keep this reason with the edit; log shows it\n(default: CALLRECORDINGCTL_MESSAGE)",
                [&options](std::string const& text) { options.message = text; });
    for (CLI::Option* const option : {ifState, wait, message})
        if (needed != nullptr)
            option->needs(needed);
}

void AddEditOptions(CLI::App& command, EditOptions& options) {
    CLI::Option* const dryRun = command.add_flag(
        "--dry-run", options.dryRun,
        "Show the rule before and after, and calls that\nare decided differently; write nothing");
    CLI::Option* const replay = command
                                    .add_option("--replay", options.replay.paths,
                                                "With --dry-run: show which calls of these call\n"
                                                "records would be decided differently")
                                    ->type_name("CALLS")
                                    ->needs(dryRun);
    AddReading(command, options.replay.format, replay);
    command.add_flag("-v,--verbose", options.verbose, "Show every rule that changes");
    AddGuards(command, options);
}

CLI::App& AddEdit(CommandLine& line, char const* name, char const* summary, char const* help,
                  Changer const& change) {
    auto const options = std::make_shared<EditOptions>();
    CLI::App& edit =
        line.AddCommand(name, summary, help, [options, change](Context const& context) {
            return RunEdit(context, *options, change);
        });
    AddEditOptions(edit, *options);
    return edit;
}

} // namespace callrecordingctl
