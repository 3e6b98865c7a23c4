// Looks up a state of the rule file by its time.

#include "commands/TextAt.h"

#include <fmt/format.h>

#include "Failure.h"
#include "administration/history/RuleTimeline.h"
#include "administration/history/When.h"
#include "administration/inspection/Digest.h"
#include "administration/inspection/ReadRules.h"

namespace callrecordingctl {
namespace {

/// Says what is not certain about era being the one of this time.
void NoteDoubt(RuleEra const& era, RuleEra const* next, std::int64_t seconds) {
    if (next == nullptr)
        return;
    if (era.from == RuleEra::kAlways)
        Say("nothing is recorded of {}; these are the rules before the first recorded edit, of {}",
            WhenText(seconds), WhenText(next->from));
    else if (next->mayBeginAt <= seconds)
        Say("the rule file was changed outside the history after {}, and by {}; these are the "
            "rules before that",
            WhenText(next->mayBeginAt), WhenText(next->from));
}

} // namespace

std::string TextAt(std::string const& path, std::int64_t seconds) {
    RequireDirectory(path);
    RuleTimeline timeline(path);
    RuleEra const& era = timeline.At(seconds);
    NoteDoubt(era, &era != &timeline.Eras().back() ? &era + 1 : nullptr, seconds);
    if (auto const text = timeline.TextOf(era))
        return *text;
    throw Failure(kExitNo, fmt::format("the rules of {} are not kept any more", WhenText(seconds)));
}

RuleList RulesAt(std::string const& path, std::optional<std::int64_t> at, std::string& digest) {
    if (!at)
        return LoadRules(path, digest);
    std::string const text = TextAt(path, *at);
    digest = DigestOf(text);
    return RulesOf(text, "state " + StateToken(digest));
}

CLI::Option* AddAt(CLI::App& command, std::string const& help, std::optional<std::int64_t>& at) {
    return AddText(
        command, "--at", "WHEN", help + ". " + kWhenHelp,
        [&at](std::string const& text) { at = ParseTime("--at", text); });
}

} // namespace callrecordingctl
