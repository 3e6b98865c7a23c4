// One edit of the rule file, as the history tells it.

#ifndef ADMINISTRATION_HISTORY_HISTORYENTRY_H
#define ADMINISTRATION_HISTORY_HISTORYENTRY_H

#include <cstdint>
#include <string>
#include <vector>

namespace CallRecordingUtils {

/// What is said about an edit by whoever makes it.
struct EditNote {
    std::string user;
    std::string command;     ///< The command line or whatever else made the edit; not empty.
    std::string message;     ///< A reason that a person gave; empty for none.
    std::string origin;      ///< Where the new rules were taken from; empty for none.
    std::int64_t undone = 0; ///< How many of the edits in effect it undoes; see EditsInEffect.
};

/// What is known about an entry. The numbers are those of the database.
enum class EditState {
    Saved = 0,   ///< The edit was saved.
    Begun = 1,   ///< It is about to be saved, unless its process was stopped.
    Unknown = 2, ///< Something else had changed the file before anybody could see whether it was.
    Outside = 3, ///< The file was changed without a record.
};

struct HistoryEntry {
    std::int64_t number = 0;  ///< From 1, without gaps; 0 for one that is not in the database yet.
    std::int64_t seconds = 0; ///< When, since 1970; of an outside edit, by when.
    EditNote note;            ///< Empty for an outside edit.
    std::string before;       ///< The digest of the file before the edit.
    std::string after; ///< The one that it had, or for an unknown edit was to have, afterwards.
    EditState state = EditState::Saved;

    bool IsOutside() const { return state == EditState::Outside; }
};

/// The digest of the file that an entry leads to. That of an unknown edit counts as unchanged.
std::string const& EndOf(HistoryEntry const& entry);

/// Brings entries up to date for a rule file that now has the digest current: tells from it what
/// became of an edit that was begun, and adds an outside edit, of that time, if the last entry does
/// not lead to current. Only the last entry matters. After an unknown edit the outside edit begins
/// where the unknown one did, and so tells what both changed together.
void Settle(std::vector<HistoryEntry>& entries, std::string const& current, std::int64_t seconds);

/// The edits that are in effect, the latest last: without those that were undone, without the edits
/// that undid them, and without those that changed nothing.
std::vector<HistoryEntry> EditsInEffect(std::vector<HistoryEntry> const& entries);

} // namespace CallRecordingUtils

#endif
