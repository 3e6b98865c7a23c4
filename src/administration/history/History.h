// What was done to a rule file: an SQLite database beside it, with every edit and the states of the
// file before and after it.

#ifndef ADMINISTRATION_HISTORY_HISTORY_H
#define ADMINISTRATION_HISTORY_HISTORY_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "administration/history/Database.h"
#include "administration/history/HistoryEntry.h"
#include "administration/history/States.h"

namespace CallRecordingUtils {

/// A rule file together with its edits; the last one leads to text.
struct Snapshot {
    std::string text; ///< Empty if there is no rule file.
    std::vector<HistoryEntry> entries;
};

/// For reading. Changes nothing, and needs no lock; a missing history is empty. Operations throw a
/// std::exception that names the file and the reason.
class History {
  public:
    /// Opens the history of the rule file at path.
    explicit History(std::string const& path);

    /// The rule file as it is now, and all edits in their order.
    Snapshot Read();

    /// All edits in their order, the last of which leads to the text current.
    std::vector<HistoryEntry> Entries(std::string const& current);

    /// The text of the file in the state with this digest, or with a digest that begins like this;
    /// nothing if the state is not kept. Throws an Error if it is damaged.
    std::optional<std::string> TextOf(std::string const& digest);

    /// The same, faster, for looking at many states: damage that the checksums of the compression
    /// do not show goes unnoticed.
    std::optional<std::string> GlanceAt(std::string const& digest);

  private:
    std::string path_;
    std::optional<Database> database_;
    std::optional<States> states_;
};

/// For writing. REQUIRES: the process holds the lock of the rule file (RuleFileLock), and ignores
/// SIGXFSZ, which SQLite would raise at a limit on the size of files. Operations throw a
/// std::exception that names the file and the reason; what failed has changed nothing.
///
/// An edit is recorded before it is saved, with the digest that the file is to have afterwards. So
/// whoever looks at the history after a crash can tell from the file whether the edit happened.
class HistoryWriter {
  public:
    /// Opens the history of the rule file at path; creates it if it is missing.
    explicit HistoryWriter(std::string const& path);

    /// Records that the file is about to change from one text to the other.
    void Begin(EditNote const& note, std::string const& before, std::string const& after);

    /// The edit of Begin was saved.
    void Finish();

    /// Records an edit that was saved already, although Begin had failed. (SQLite may report a
    /// failure after it has written everything; then this finishes what Begin wrote.)
    void RecordSaved(EditNote const& note, std::string const& before, std::string const& after);

    /// Tells from the text that the file has now what became of the edit of Begin.
    void Settle(std::string const& current);

    /// Limits the size of the file, in MiB, from the next edit on.
    void KeepAtMost(std::int64_t mebibytes);

  private:
    std::vector<HistoryEntry> Last();
    std::int64_t Insert(HistoryEntry const& entry);
    void SettleLast(std::string const& currentDigest);
    void DropOldest();

    std::string path_;
    Database database_;
    States states_;
    std::int64_t begun_ = 0; // The number of the entry of Begin.
};

} // namespace CallRecordingUtils

#endif
