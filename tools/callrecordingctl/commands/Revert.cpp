// revert: takes back one edit and keeps those that came after it.

#include <algorithm>
#include <memory>

#include <fmt/format.h>

#include "administration/edit/Reversal.h"
#include "administration/history/History.h"
#include "administration/inspection/Digest.h"
#include "commands/RunEdit.h"
#include "output/EditReport.h"
#include "output/EditStep.h"

namespace callrecordingctl {
namespace {

constexpr char kHelp[] =
    R"(NUMBER is the one that log shows. What that edit did to rules is taken back, and
everything else stays as later edits have made it. If one of these touched the
same rules, it is named, and nothing is changed: revert that one first. A rule
that the edit deleted or moved goes back behind the nearest of the rules before
it that has not moved since.
Comments stay as they are. "undo" takes a revert back like any other edit.
Example: callrecordingctl revert 12 --dry-run
)";

using Entries = std::vector<HistoryEntry>;

/// The place of the edit among those in effect.
Entries::const_iterator Find(Entries const& entries, Entries const& effective,
                             std::int64_t number) {
    auto const isIt = [number](HistoryEntry const& entry) { return entry.number == number; };
    auto const recorded = std::find_if(entries.begin(), entries.end(), isIt);
    if (recorded == entries.end())
        throw Failure(kExitNoSuchRule,
                      fmt::format("no edit {} is recorded; see \"callrecordingctl log\"", number));
    auto const found = std::find_if(effective.begin(), effective.end(), isIt);
    if (found == effective.end())
        throw Failure(
            kExitNo, recorded->note.undone > 0
                         ? fmt::format("edit {} is an undo, which \"undo --to {}\" takes back with "
                                       "all that came later; nothing was changed",
                                       number, number - 1)
                         : fmt::format("edit {} was undone already; nothing was changed", number));
    if (found->state == EditState::Unknown)
        throw Failure(kExitNo, fmt::format("it is not known whether edit {} was saved; revert the "
                                           "change that follows it; nothing was changed",
                                           number));
    return found;
}

std::string Text(History& history, RuleEdit const& edit, std::string const& digest) {
    if (digest == DigestOf(edit.TextBefore()))
        return edit.TextBefore();
    if (auto const text = history.TextOf(digest))
        return *text;
    throw Failure(kExitNo, fmt::format("the state {} of the rule file is not kept any more; "
                                       "nothing was changed",
                                       StateToken(digest)));
}

/// Goes on to the state after a later edit. Returns what that did to the same rules. A state that
/// is no rule file is passed over; what it changed shows in the next one.
std::string Follow(Reversal& reversal, HistoryEntry const& entry, std::string const& text,
                   bool isLast) {
    std::vector<Change> touching;
    try {
        touching = reversal.Follow(text);
    } catch (Error const&) {
        if (isLast)
            throw;
    }
    std::string told = touching.empty() ? "" : fmt::format("\n{}", EditName(entry));
    for (Change const& change : touching)
        told += fmt::format("\n  {}", Sentence(change, reversal.Count()));
    return told;
}

ExitCode Revert(RuleEdit& edit, std::int64_t const& number) {
    History history(edit.Path());
    Entries const entries = history.Entries(edit.TextBefore());
    Entries const effective = EditsInEffect(entries);
    auto const reverted = Find(entries, effective, number);
    Reversal reversal(Text(history, edit, reverted->before), Text(history, edit, reverted->after));
    if (reversal.IsEmpty())
        throw Failure(kExitNo, fmt::format("{} changed no rule, only comments or other entries; "
                                           "nothing was changed",
                                           EditName(*reverted)));
    std::string touching;
    for (auto later = reverted + 1; later != effective.end(); ++later)
        if (later->state != EditState::Unknown)
            touching += Follow(reversal, *later, Text(history, edit, later->after),
                               later + 1 == effective.end());
    if (!touching.empty())
        throw Failure(kExitNo,
                      fmt::format("{} cannot be taken back alone, because of what was done "
                                  "to the same rules later; nothing was changed{}",
                                  EditName(*reverted), touching));
    Say("taking back {}", EditName(*reverted));
    reversal.TakeBack(edit);
    return kExitYes;
}

} // namespace

void AddRevert(CommandLine& line) {
    auto const number = std::make_shared<std::int64_t>();
    CLI::App& revert = AddEdit(line, "revert", "Take back one edit and keep those after it", kHelp,
                               number, Revert);
    AddNumber(revert, "NUMBER", "", "The number of the edit in log", 1,
              [number](std::uint32_t value) { *number = value; })
        ->required();
}

} // namespace callrecordingctl
