// Writes and reads where rules came from.

#include "administration/pull/TakenCommit.h"

#include <charconv>

#include <fmt/format.h>

namespace CallRecordingUtils {
namespace {

constexpr char kCommit[] = "commit ";
constexpr char kOf[] = " of branch ";
constexpr char kIn[] = " in ";
constexpr char kSeconds[] = "committed ";
constexpr char kAuthor[] = "author ";
constexpr char kSigner[] = "signed by ";

bool IsSame(Branch const& a, Branch const& b) {
    return a.repository == b.repository && a.name == b.name;
}

/// Takes from text what comes before separator, and the separator; all of it if there is none.
std::string TakeUntil(std::string& text, std::string const& separator) {
    std::size_t const at = text.find(separator);
    std::string const taken = text.substr(0, at);
    text.erase(0, at == std::string::npos ? at : at + separator.size());
    return taken;
}

} // namespace

// A commit and a branch have no blanks in their names, and no name has a line end.
std::string OriginOf(TakenCommit const& taken) {
    std::string origin = fmt::format("{}{}{}{}{}{}\n{}{}\n{}{}", kCommit, taken.commit, kOf,
                                     taken.branch.name, kIn, taken.branch.repository, kSeconds,
                                     taken.note.seconds, kAuthor, taken.note.author);
    if (!taken.signer.empty())
        origin += fmt::format("\n{}{}", kSigner, taken.signer);
    return origin;
}

std::optional<TakenCommit> ParseOrigin(std::string const& origin) {
    std::string rest = origin;
    if (TakeUntil(rest, kCommit) != "" || rest.empty())
        return std::nullopt;
    TakenCommit taken;
    taken.commit = TakeUntil(rest, kOf);
    taken.branch.name = TakeUntil(rest, kIn);
    taken.branch.repository = TakeUntil(rest, std::string("\n") + kSeconds);
    std::string const seconds = TakeUntil(rest, std::string("\n") + kAuthor);
    std::from_chars(seconds.data(), seconds.data() + seconds.size(), taken.note.seconds);
    taken.note.author = TakeUntil(rest, std::string("\n") + kSigner);
    taken.signer = rest;
    return taken;
}

PullHistory FindTaken(std::vector<HistoryEntry> const& entries, Branch const& branch) {
    PullHistory found;
    for (HistoryEntry const& entry : entries) {
        if (entry.state != EditState::Saved)
            continue;
        std::optional<TakenCommit> taken = ParseOrigin(entry.note.origin);
        if (!taken)
            continue;
        if (IsSame(taken->branch, branch))
            found.ofThisBranch = taken->commit;
        found.lastDigest = entry.after;
        found.lastSeconds = entry.seconds;
        taken->note.subject = entry.note.message;
        found.last = std::move(taken);
    }
    return found;
}

} // namespace CallRecordingUtils
