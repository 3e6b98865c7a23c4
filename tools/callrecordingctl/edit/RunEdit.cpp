// Running an edit: lock, read, change, save once, report.

#include "edit/RunEdit.h"

#include <filesystem>

#include <fmt/format.h>

#include "edit/EditLock.h"
#include "output/EditReport.h"

namespace callrecordingctl {
namespace {

namespace fs = std::filesystem;

void MakeDirectory(fs::path const& directory) {
    std::error_code error;
    if (fs::create_directory(directory, error))
        Say("{}: made this directory", directory.string());
    if (error)
        throw Failure(kExitUnsaved,
                      fmt::format("{}: cannot be made: {}", directory.string(), error.message()));
}

} // namespace

ExitCode RunEdit(Context const& context, EditOptions const& options, Changer const& change) {
    HasRuleFile(context.path); // Says what is missing.
    fs::path const directory = fs::path(context.path).parent_path();
    std::optional<EditLock> lock;
    if (!options.dryRun) {
        MakeDirectory(directory);
        lock.emplace(context.path + ".lock", options.patience);
    }
    // Where a dry run misses the directory, a file in its place would be missing, too: no rules.
    RuleEdit edit(fs::exists(directory) ? context.path : directory.string());
    change(edit);
    if (lock)
        edit.Save();
    lock.reset();
    ReportEdit(edit.Changes(), edit.Count(), options.dryRun, context.json);
    return kExitYes;
}

CLI::App& AddEdit(CommandLine& line, char const* name, char const* summary, char const* help,
                  Changer const& change) {
    auto const options = std::make_shared<EditOptions>();
    CLI::App& edit =
        line.AddCommand(name, summary, help, [options, change](Context const& context) {
            return RunEdit(context, *options, change);
        });
    edit.add_flag("--dry-run", options->dryRun, "Show the rule before and after; write nothing");
    AddNumber(
        edit, "--wait", "SECONDS", "Wait so long for another client's edit\n(default: 5)", 0,
        [options](std::uint32_t seconds) { options->patience = std::chrono::seconds(seconds); });
    return edit;
}

} // namespace callrecordingctl
