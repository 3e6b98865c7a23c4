// undo: takes the last edits back.

#include <memory>

#include <fmt/format.h>

#include "administration/history/History.h"
#include "administration/history/When.h"
#include "commands/Registry.h"
#include "commands/RunEdit.h"

namespace callrecordingctl {
namespace {

constexpr char kHelp[] =
    R"(The file becomes what it was before the last N edits, byte for byte. Another
undo goes further back. An edit made around callrecordingctl stops it: see
"log", and say --also-outside if it is to be taken back as well.
)";

struct Options {
    std::size_t count = 1;
    std::optional<std::size_t> to;
    bool alsoOutside = false;
};

/// The edits that are in effect: without those that were taken back, and without the undoing.
std::vector<HistoryEntry> InEffect(std::vector<HistoryEntry> const& entries) {
    std::vector<HistoryEntry> effective;
    for (HistoryEntry const& entry : entries) {
        if (entry.undone == 0)
            effective.push_back(entry);
        for (std::int64_t i = 0; i < entry.undone && !effective.empty(); ++i)
            effective.pop_back();
    }
    return effective;
}

void RequireInside(HistoryEntry const& entry, Options const& options) {
    if (entry.IsOutside() && !options.alsoOutside)
        throw Failure(kExitNo,
                      fmt::format("the rule file was edited around callrecordingctl ({}); \"log\" "
                                  "shows what changed, and --also-outside takes it back, too; "
                                  "nothing was changed",
                                  WhenText(entry.seconds)));
}

/// The digest of the state to go back to.
std::string Target(std::vector<HistoryEntry> const& entries, Options const& options,
                   std::size_t& undone) {
    if (options.to) {
        for (HistoryEntry const& entry : entries)
            if (entry.number == static_cast<std::int64_t>(*options.to))
                return entry.after;
        throw Failure(
            kExitNoSuchRule,
            fmt::format("no edit {} is recorded; see \"callrecordingctl log\"", *options.to));
    }
    std::vector<HistoryEntry> const effective = InEffect(entries);
    if (effective.size() < options.count)
        throw Failure(kExitNo, fmt::format("only {} {} recorded that could be taken back; nothing "
                                           "was changed",
                                           effective.size(),
                                           effective.size() == 1 ? "edit is" : "edits are"));
    for (std::size_t i = 1; i <= options.count; ++i)
        RequireInside(effective[effective.size() - i], options);
    undone = options.count;
    return effective[effective.size() - options.count].before;
}

ExitCode Undo(RuleEdit& edit, std::string const& path, Options const& options) {
    try {
        History history(path, false);
        std::size_t undone = 0;
        std::string const target = Target(history.Entries(edit.TextBefore()), options, undone);
        auto const text = history.TextOf(target);
        if (!text)
            throw Failure(kExitNo, "that state of the file is not kept any more");
        edit.ReplaceText(*text);
        edit.TakeBack(undone);
        return kExitYes;
    } catch (HistoryError const& error) {
        throw Failure(kExitUnreadable, error.what());
    }
}

} // namespace

void AddUndo(CommandLine& line) {
    auto const options = std::make_shared<Options>();
    CLI::App& undo = AddEdit(
        line, "undo", "Take the last edits back", kHelp,
        [options](RuleEdit& edit) { return Undo(edit, edit.Path(), *options); });
    AddNumber(
        undo, "N", "", "How many edits (default: 1)", 1,
        [options](std::uint32_t count) { options->count = count; });
    AddNumber(undo, "--to", "NUMBER",
              "Back, or forth, to the state behind the edit with\nthis number in log", 1,
              [options](std::uint32_t number) { options->to = number; });
    undo.add_flag("--also-outside", options->alsoOutside,
                  "Take back edits made around callrecordingctl");
}

} // namespace callrecordingctl
