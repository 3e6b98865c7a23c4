// The commits whose rules were taken, as the history keeps them.

#ifndef ADMINISTRATION_PULL_TAKENCOMMIT_H
#define ADMINISTRATION_PULL_TAKENCOMMIT_H

#include <optional>
#include <string>
#include <vector>

#include "administration/history/HistoryEntry.h"
#include "administration/pull/GitCopy.h"

namespace CallRecordingUtils {

/// A commit whose rules were put in force.
struct TakenCommit {
    std::string commit;
    Branch branch;
    CommitNote note;    ///< Its subject is the message of the entry.
    std::string signer; ///< Empty if no signature was asked for.
};

/// The origin of an entry of the history, for people as well, and back; nothing if the rules of the
/// entry do not come from a commit.
std::string OriginOf(TakenCommit const& taken);
std::optional<TakenCommit> ParseOrigin(std::string const& origin);

/// What the history knows about a branch and the rule file.
struct PullHistory {
    std::optional<TakenCommit> last;         ///< The commit taken last, of whatever branch.
    std::string lastDigest;                  ///< Of the rule file with its rules.
    std::int64_t lastSeconds = 0;            ///< When it was taken.
    std::optional<std::string> ofThisBranch; ///< The commit taken last of the branch asked about.
};

PullHistory FindTaken(std::vector<HistoryEntry> const& entries, Branch const& branch);

} // namespace CallRecordingUtils

#endif
