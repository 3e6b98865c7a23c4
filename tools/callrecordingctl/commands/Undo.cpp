// undo: goes back to the rules before the last edits.

#include <algorithm>
#include <memory>

#include <fmt/format.h>

#include "administration/history/History.h"
#include "administration/history/When.h"
#include "administration/inspection/Digest.h"
#include "administration/inspection/ReadRules.h"
#include "commands/RunEdit.h"
#include "output/EditStep.h"

namespace callrecordingctl {
namespace {

constexpr char kHelp[] =
    R"(The file becomes what it was before the last N edits, byte for byte; the output
names them. Another undo goes further back, and "revert" takes back one edit
from the middle. A change outside the history (by hand, by another
program, or by an edit that could not be recorded) stops it: see "log", and say
--also-outside if that is to be undone as well.
)";

struct Options {
    std::size_t count = 1;
    std::optional<std::size_t> to;
    bool alsoOutside = false;
};

void RequireInside(HistoryEntry const& entry) {
    if (entry.IsOutside())
        throw Failure(kExitNo,
                      fmt::format("the rule file was changed outside the history by {}; \"log\" "
                                  "shows what changed, and --also-outside undoes that, too; "
                                  "nothing was changed",
                                  WhenText(entry.seconds)));
}

/// What is before an outside change is not known if it is not known whether the edit before it was
/// saved.
void RequireKnown(HistoryEntry const& entry) {
    if (entry.state == EditState::Unknown)
        throw Failure(
            kExitNo,
            fmt::format(
                "it is not known whether edit {} was saved before the rule file was changed "
                "outside the history; \"undo --to {}\" goes to the rules before it, "
                "\"undo --to {}\" to those that it was to make; nothing was changed",
                entry.number, entry.number - 1, entry.number));
}

/// The digest of the state after the edit with this number; says which edit that is.
std::string StateAfter(std::vector<HistoryEntry> const& entries, std::int64_t number) {
    for (HistoryEntry const& entry : entries) {
        bool const isBefore = entry.number == number + 1; // Of edit 0, or one not kept any more.
        if (entry.number == 0 || (entry.number != number && !isBefore))
            continue;
        Say("going to the rules {} {}", isBefore ? "before" : "after", EditName(entry));
        return isBefore ? entry.before : entry.after;
    }
    throw Failure(kExitNoSuchRule,
                  fmt::format("no edit {} is recorded; see \"callrecordingctl log\"", number));
}

void NoteUndone(std::vector<HistoryEntry> const& effective, std::size_t first) {
    constexpr std::size_t kMost = 5;
    std::size_t const last = effective.size() - std::min(kMost, effective.size() - first);
    for (std::size_t i = effective.size(); i-- > last;)
        Say("undoing {}", EditName(effective[i]));
    if (last > first)
        Say("and {} before that; the first of them is {}",
            last - first > 1 ? fmt::format("{} edits", last - first) : "one",
            EditName(effective[first]));
}

/// The digest of the state before the last edits in effect; says which edits these are.
std::string StateBefore(std::vector<HistoryEntry> const& entries, Options const& options) {
    std::vector<HistoryEntry> const effective = EditsInEffect(entries);
    if (effective.size() < options.count)
        throw Failure(kExitNo, fmt::format("only {} {} recorded that could be undone; nothing was "
                                           "changed",
                                           effective.size(),
                                           effective.size() == 1 ? "edit is" : "edits are"));
    std::size_t const first = effective.size() - options.count;
    for (std::size_t i = effective.size(); i-- > first;) {
        if (!options.alsoOutside)
            RequireInside(effective[i]);
        if (effective[i].IsOutside() && i > 0)
            RequireKnown(effective[i - 1]);
    }
    NoteUndone(effective, first);
    return effective[first].before;
}

ExitCode Undo(RuleEdit& edit, Options const& options) {
    History history(edit.Path());
    std::vector<HistoryEntry> const entries = history.Entries(edit.TextBefore());
    std::string const target = options.to
                                   ? StateAfter(entries, static_cast<std::int64_t>(*options.to))
                                   : StateBefore(entries, options);
    auto const text = history.TextOf(target);
    if (!text)
        throw Failure(kExitNo, fmt::format("the state {} of the rule file is not kept any more; "
                                           "nothing was changed",
                                           StateToken(target)));
    RulesOf(*text, "state " + StateToken(target)); // Throws if it was broken then.
    edit.ReplaceText(*text);
    edit.TakeBack(options.to ? 0 : options.count);
    return kExitYes;
}

} // namespace

void AddUndo(CommandLine& line) {
    auto const options = std::make_shared<Options>();
    CLI::App& undo = AddEdit(line, "undo", "Undo the last edits", kHelp, options, Undo);
    AddNumber(
        undo, "N", "", "How many edits (default: 1)", 1,
        [options](std::uint32_t count) { options->count = count; });
    AddNumber(undo, "--to", "NUMBER",
              "Go to the rules after the edit with this number\nin log, back or forth; 0: before "
              "the first",
              0, [options](std::uint32_t number) { options->to = number; });
    undo.add_flag("--also-outside", options->alsoOutside,
                  "Undo changes outside the history as well");
}

} // namespace callrecordingctl
