// Running an edit: lock, read, change, save once, report.

#ifndef CALLRECORDINGCTL_COMMANDS_RUNEDIT_H
#define CALLRECORDINGCTL_COMMANDS_RUNEDIT_H

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "CommandLine.h"
#include "administration/edit/RuleEdit.h"
#include "commands/EditReplay.h"
#include "database/RuleFileLock.h"

namespace callrecordingctl {

/// What all edits have in common.
struct EditOptions {
    bool dryRun = false;
    bool verbose = false;
    std::optional<std::string> message; ///< Why the edit is made, for the history.
    std::optional<std::string> ifState; ///< The token of the state that the file has to be in.
    std::chrono::seconds patience{5};   ///< How long to wait for the lock.
    CallFiles replay;                   ///< Of a dry run only.
};

/// Makes the changes. Returns the exit code: no when there is nothing to do. Throws a Failure when
/// they are not possible.
using Changer = std::function<ExitCode(RuleEdit&)>;

/// Takes the lock, reads the file, has change change it, saves it unless it is as it was, and
/// prints what changed. What was saved is done: the exit code then does not depend on whether it
/// could be printed. A dry run saves nothing and takes no lock.
ExitCode RunEdit(Context const& context, EditOptions const& options, Changer const& change);

/// Adds --if-state, --wait and --message, of which each can be given beside needed only, unless
/// that is null.
void AddGuards(CLI::App& edit, EditOptions& options, CLI::Option* needed = nullptr);

/// Throws a Failure if the file is not in the state that options ask for.
void RequireState(RuleEdit const& edit, EditOptions const& options);

/// Adds the options that all edits have.
void AddEditOptions(CLI::App& command, EditOptions& options);

/// Takes the lock of the rule file at path; a wait that people notice is said. Throws a Failure.
std::unique_ptr<RuleFileLock> LockRules(std::string const& path, std::chrono::seconds patience);

/// Adds a command that edits, with the options that all edits have; change runs as in RunEdit.
CLI::App& AddEdit(CommandLine& line, char const* name, char const* summary, char const* help,
                  Changer const& change);

/// The same for an edit with options of its own, which live as long as the command line.
template <typename Options>
CLI::App& AddEdit(CommandLine& line, char const* name, char const* summary, char const* help,
                  std::shared_ptr<Options> const& options,
                  ExitCode (*change)(RuleEdit&, Options const&)) {
    return AddEdit(
        line, name, summary, help,
        [options, change](RuleEdit& edit) { return change(edit, *options); });
}

} // namespace callrecordingctl

#endif
