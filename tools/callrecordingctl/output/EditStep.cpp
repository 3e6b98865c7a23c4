// Writes the entries of log.

#include "output/EditStep.h"

#include <algorithm>

#include <fmt/format.h>

#include "administration/history/When.h"
#include "administration/pull/TakenCommit.h"
#include "output/EditReport.h"
#include "output/Screen.h"
#include "text/Printable.h"

namespace callrecordingctl {
namespace {

constexpr std::size_t kIndent = 5;

/// The command line, or its beginning and how much was left out.
std::string Short(std::string const& command) {
    constexpr std::size_t kMost = 300;
    constexpr std::size_t kKept = 160;
    if (command.size() <= kMost)
        return command;
    std::size_t const blank = command.rfind(' ', kKept);
    std::string const kept = command.substr(
        0, blank != std::string::npos && blank > 0 ? blank : BytesWithin(command, kKept));
    auto const words =
        std::count(command.begin() + static_cast<std::ptrdiff_t>(kept.size()), command.end(), ' ');
    return words > 1 ? fmt::format("{} ... and {} more words", kept, words) : kept + " ...";
}

/// The lines of text, each behind mark.
std::string Quoted(char const* mark, std::string const& text) {
    std::string quoted;
    for (std::size_t begin = 0; begin < text.size();) {
        std::size_t const end = std::min(text.find('\n', begin), text.size());
        quoted +=
            Wrapped(std::string(kIndent, ' ') + mark + Printable(text.substr(begin, end - begin)),
                    kIndent + 2);
        begin = end + 1;
    }
    return quoted;
}

std::string OriginText(std::string const& origin) {
    auto const taken = ParseOrigin(origin);
    return taken ? fmt::format("commit {} of {}, branch {}, by {}{}", taken->commit.substr(0, 12),
                               taken->branch.repository, taken->branch.name, taken->note.author,
                               taken->signer.empty() ? "" : ", signed by " + taken->signer)
                 : origin;
}

std::string Heading(HistoryEntry const& entry, StepStyle style) {
    std::string const number = entry.number > 0 ? std::to_string(entry.number) : "-";
    std::string const& command = entry.note.command;
    std::string text =
        Wrapped(fmt::format("{:<4} {}  {}", number, WhenText(entry.seconds),
                            Printable(entry.IsOutside()
                                          ? "changed outside the history by then"
                                          : entry.note.user + ": " +
                                                (style.isVerbose ? command : Short(command)))),
                kIndent);
    return text + Quoted("> ", entry.note.message) + Quoted("from ", OriginText(entry.note.origin));
}

std::string Line(std::string const& text) {
    return Wrapped(std::string(kIndent, ' ') + text, kIndent + 2);
}

std::string ChangeText(Change const& change, EditStep const& step, StepStyle style) {
    std::string text = Line(Printable(Sentence(change, step.count)));
    if (style.hasFields)
        for (std::string const& field : FieldLines(change))
            text += Wrapped(std::string(kIndent + 2, ' ') + Printable(field), kIndent + 4);
    return text;
}

std::string ChangesText(EditStep const& step, StepStyle style) {
    constexpr std::size_t kMost = 5;
    std::string text;
    std::size_t shown = 0;
    std::size_t others = 0;
    if (step.about && !style.isVerbose) {
        text = ChangeText(*step.about, step, style);
        others = static_cast<std::size_t>(
            std::count_if(step.changes.begin(), step.changes.end(), [&](Change const& change) {
                return change.beforePosition != step.about->beforePosition ||
                       change.afterPosition != step.about->afterPosition;
            }));
    } else {
        for (Change const& change : step.changes) {
            if (style.isVerbose || (change.isMeant && shown < kMost)) {
                ++shown;
                text += ChangeText(change, step, style);
            } else {
                ++others;
            }
        }
    }
    if (others > 0)
        text += Line(
            fmt::format("and {} more {}; -v shows each", others, others == 1 ? "rule" : "rules"));
    return text;
}

char const* StateName(EditState state) {
    switch (state) {
    case EditState::Unknown: return "unknown";
    case EditState::Outside: return "outside";
    default: return "saved";
    }
}

} // namespace

std::string EditName(HistoryEntry const& entry) {
    std::string const when = WhenText(entry.seconds);
    std::string const name = entry.IsOutside()
                                 ? fmt::format("the change outside the history by {}", when)
                                 : fmt::format("edit {} of {} by {}: {}", entry.number, when,
                                               entry.note.user, Short(entry.note.command));
    bool const isSaid = entry.note.command.find(entry.note.message) != std::string::npos;
    return isSaid ? name : fmt::format("{} ({})", name, entry.note.message);
}

std::string ToText(EditStep const& step, StepStyle style) {
    std::string text = Heading(step.entry, style);
    if (step.entry.state == EditState::Unknown)
        text += Line("it is not known whether this was saved; it was to do this:");
    if (step.uncertain > 0)
        text += Line(fmt::format("together with edit {}, if that was saved:", step.uncertain));
    if (step.isBlurred)
        text += Line("this edit, or a later one whose rules cannot be read, did this:");
    if (!step.problem.empty() && !step.about)
        return text + Line(Printable(step.problem));
    if (step.changes.empty() && !step.about)
        return text + Line(step.entry.before == step.entry.after
                               ? "the rule file stayed the same"
                               : "no rule changed; comments or other entries did");
    return text + ChangesText(step, style);
}

nlohmann::ordered_json ToJson(EditStep const& step) {
    HistoryEntry const& entry = step.entry;
    return {{"number", entry.number},
            {"time", WhenText(entry.seconds)},
            {"user", entry.note.user},
            {"command", entry.note.command},
            {"message", entry.note.message},
            {"origin", entry.note.origin},
            {"outside", entry.IsOutside()},
            {"state", StateName(entry.state)},
            {"undone", entry.note.undone},
            {"digest_before", entry.before},
            {"digest_after", entry.after},
            {"problem", step.problem},
            {"changes", ChangesToJson(step.changes)}};
}

} // namespace callrecordingctl
