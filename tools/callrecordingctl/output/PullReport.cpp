// Prints reports on pulls.

#include "output/PullReport.h"

#include <fmt/format.h>

#include "administration/inspection/Digest.h"
#include "output/ComparisonText.h"
#include "output/EditReport.h"
#include "output/RuleText.h"
#include "output/Screen.h"
#include "text/Printable.h"

namespace callrecordingctl {
namespace {

constexpr std::size_t kMost = 20;

std::string TextOf(std::vector<Change> const& changes, std::size_t count) {
    std::string text;
    std::size_t shown = 0;
    for (Change const& change : changes)
        if (change.isMeant && ++shown <= kMost)
            text += "\n  " + Printable(Sentence(change, count));
    if (shown > kMost)
        text += fmt::format("\n  and {} more", shown - kMost);
    return text.empty() ? "\n  no rule is another one; comments or other entries are" : text;
}

nlohmann::ordered_json ToJson(TakenCommit const& taken, char const* outcome,
                              std::string const& digest) {
    nlohmann::ordered_json json{{"outcome", outcome},
                                {"commit", taken.commit},
                                {"branch", taken.branch.name},
                                {"repository", taken.branch.repository},
                                {"author", taken.note.author},
                                {"subject", taken.note.subject},
                                {"signer", nullptr},
                                {"file_state", StateToken(digest)},
                                {"file_digest", digest},
                                {"changes", nlohmann::ordered_json::array()},
                                {"calls", nullptr}};
    if (!taken.signer.empty())
        json["signer"] = taken.signer;
    return json;
}

std::string Summary(TakenCommit const& taken) {
    return Printable(fmt::format("commit {} of branch {} by {}{}: {}", taken.commit.substr(0, 12),
                                 taken.branch.name, taken.note.author,
                                 taken.signer.empty() ? "" : ", signed by " + taken.signer,
                                 taken.note.subject));
}

} // namespace

std::string ChangesText(RuleList const& before, RuleList const& after) {
    return TextOf(ChangesBetween(before, after), after.size());
}

void ReportNothingNew(TakenCommit const& taken, std::string const& digest, bool json) {
    if (json)
        PrintJson(ToJson(taken, "nothing_new", digest));
    else
        PrintLines("nothing new: the rules are those of {}\n", Summary(taken));
}

void ReportPull(RuleEdit& edit, TakenCommit const& taken, PullReportOptions const& options) {
    static RuleList const none;
    bool const isMalformed = edit.Malformation().has_value();
    RuleList const& before = isMalformed ? none : edit.Before();
    std::optional<ComparedCalls> calls;
    if (!isMalformed)
        calls = CompareCalls(before, edit.After(), options.json ? kAllPairs : kPairsOfRuleShown,
                             options.memory, options.calls);
    std::vector<Change> const changes = ChangesBetween(before, edit.After());
    if (options.json) {
        nlohmann::ordered_json json =
            ToJson(taken, options.isDryRun ? "dry_run" : "taken", DigestOf(edit.TextAfter()));
        json["changes"] = ChangesToJson(changes);
        if (calls)
            json["calls"] = callrecordingctl::ToJson(*calls, before, edit.After());
        return PrintJson(json);
    }
    PrintLines("{}{}{}\n", options.isDryRun ? "dry run, to be taken: " : "taken: ", Summary(taken),
               edit.IsChanged() ? TextOf(changes, edit.After().size())
                                : "\n  the rule file is the same");
    if (calls)
        PrintCallChanges(*calls, before, edit.After(), options.isDryRun);
    else
        PrintLines("which calls are decided differently is unknown, since the file as it was "
                   "cannot be read\n");
}

} // namespace callrecordingctl
