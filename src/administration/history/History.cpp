// The tables of the history, and what is read from them and written to them.

#include "administration/history/History.h"

#include <ctime>

#include <fmt/format.h>
#include <host/AtomicFile.h>

#include "administration/history/HistoryFile.h"
#include "administration/inspection/Digest.h"
#include "common/Error.h"

namespace CallRecordingUtils {
namespace {

/// Tells a history from the databases of other applications; the letters are "CRUH".
constexpr std::int64_t kApplication = 0x43525548;
/// Of the tables. A program refuses a history that a newer one has written.
constexpr std::int64_t kVersion = 1;

constexpr std::int64_t kUsualMebibytes = 16;

constexpr char kColumns[] = "number, seconds, user, command, message, origin, undone, before, "
                            "after, state";

bool IsEmpty(Database& database) {
    return database.Number("PRAGMA application_id") == 0 &&
           database.Number("SELECT count(*) FROM sqlite_master") == 0;
}

void RequireOurs(Database& database, std::string const& path) {
    if (database.Number("PRAGMA application_id") != kApplication)
        throw Error(Error::Kind::Unreadable, path + ": is a database of another application");
    std::int64_t const version = database.Number("PRAGMA user_version");
    if (version != kVersion)
        throw Error(Error::Kind::Unreadable,
                    fmt::format("{}: was written by a newer callrecordingctl (its tables are of "
                                "version {}; this one knows version {})",
                                path, version, kVersion));
}

/// In one transaction, so that a kill leaves all of the tables or none.
void CreateTables(Database& database) {
    database.Run("PRAGMA auto_vacuum = FULL");
    Transaction transaction(database);
    if (!IsEmpty(database))
        return;
    database.Run(fmt::format("PRAGMA application_id = {}", kApplication));
    database.Run(fmt::format("PRAGMA user_version = {}", kVersion));
    // Numbers have no gaps, since only the last entry is ever withdrawn.
    database.Run("CREATE TABLE edits (number INTEGER PRIMARY KEY, seconds INTEGER NOT NULL, "
                 "user TEXT NOT NULL, command TEXT NOT NULL, message TEXT NOT NULL, "
                 "origin TEXT NOT NULL, undone INTEGER NOT NULL, before TEXT NOT NULL, "
                 "after TEXT NOT NULL, state INTEGER NOT NULL)");
    database.Run("CREATE TABLE settings (name TEXT PRIMARY KEY, value INTEGER NOT NULL)");
    States(database).Create();
    transaction.Commit();
}

HistoryEntry EntryOf(Statement& row) {
    HistoryEntry entry;
    entry.number = row.Number(0);
    entry.seconds = row.Number(1);
    entry.note = {row.Text(2), row.Text(3), row.Text(4), row.Text(5), row.Number(6)};
    entry.before = row.Text(7);
    entry.after = row.Text(8);
    entry.state = static_cast<EditState>(row.Number(9));
    return entry;
}

} // namespace

History::History(std::string const& path) : path_(path) {
    if (!HasHistoryFile(path))
        return;
    database_.emplace(HistoryPath(path), Database::Access::Read);
    if (IsEmpty(*database_))
        return;
    RequireOurs(*database_, HistoryPath(path));
    states_.emplace(*database_);
}

std::vector<HistoryEntry> History::Entries(std::string const& current) {
    std::vector<HistoryEntry> entries;
    if (states_) {
        Statement rows(*database_,
                       fmt::format("SELECT {} FROM edits ORDER BY number", kColumns).c_str());
        while (rows.Next())
            entries.push_back(EntryOf(rows));
    }
    Settle(entries, DigestOf(current), ChangeTimeOf(path_));
    return entries;
}

// An edit may be saved and recorded meanwhile. The entries fit the file if that is the same before
// and after they are read, because an edit is begun before the file changes and finished after it.
Snapshot History::Read() {
    constexpr int kMostReads = 20;
    for (int reads = 1;; ++reads) {
        HostPlatform::FileText file = HostPlatform::ReadFile(path_);
        std::vector<HistoryEntry> entries = Entries(file.text);
        if (reads == kMostReads || HostPlatform::ReadFile(path_).stamp == file.stamp)
            return {std::move(file.text), std::move(entries)};
    }
}

std::optional<std::string> History::TextOf(std::string const& digest) {
    return states_ ? states_->TextOf(digest, true) : std::nullopt;
}

std::optional<std::string> History::GlanceAt(std::string const& digest) {
    return states_ ? states_->TextOf(digest, false) : std::nullopt;
}

namespace {

std::string const& Prepared(std::string const& path) {
    PrepareHistoryFile(path);
    return path;
}

} // namespace

HistoryWriter::HistoryWriter(std::string const& path)
    : path_(Prepared(path)), database_(HistoryPath(path), Database::Access::Write),
      states_(database_) {
    if (IsEmpty(database_))
        CreateTables(database_);
    RequireOurs(database_, HistoryPath(path));
}

std::int64_t HistoryWriter::Insert(HistoryEntry const& entry) {
    Statement(database_, "INSERT INTO edits (seconds, user, command, message, origin, undone, "
                         "before, after, state) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)")
        .Bind(entry.seconds)
        .Bind(entry.note.user)
        .Bind(entry.note.command)
        .Bind(entry.note.message)
        .Bind(entry.note.origin)
        .Bind(entry.note.undone)
        .Bind(entry.before)
        .Bind(entry.after)
        .Bind(static_cast<std::int64_t>(entry.state))
        .Next();
    return database_.LastKey();
}

/// The last entry of the database; nothing if there are none.
std::vector<HistoryEntry> HistoryWriter::Last() {
    std::string const sql =
        fmt::format("SELECT {} FROM edits ORDER BY number DESC LIMIT 1", kColumns);
    Statement row(database_, sql.c_str());
    return row.Next() ? std::vector{EntryOf(row)} : std::vector<HistoryEntry>();
}

/// Settles the last entry of the database.
void HistoryWriter::SettleLast(std::string const& currentDigest) {
    std::vector<HistoryEntry> entries = Last();
    if (entries.empty())
        return;
    std::int64_t const number = entries.front().number;
    CallRecordingUtils::Settle(entries, currentDigest, ChangeTimeOf(path_));
    if (entries.empty())
        return (void)Statement(database_, "DELETE FROM edits WHERE number = ?").Bind(number).Next();
    Statement(database_, "UPDATE edits SET state = ? WHERE number = ?")
        .Bind(static_cast<std::int64_t>(entries.front().state))
        .Bind(number)
        .Next();
    if (entries.size() > 1)
        Insert(entries.back());
}

void HistoryWriter::Begin(EditNote const& note, std::string const& before,
                          std::string const& after) {
    HistoryEntry entry;
    entry.before = DigestOf(before);
    entry.after = DigestOf(after);
    Transaction transaction(database_);
    SettleLast(entry.before);
    DropOldest();
    states_.Keep(before, entry.before);
    states_.Keep(after, entry.after);
    entry.seconds = std::time(nullptr);
    entry.note = note;
    entry.state = EditState::Begun;
    begun_ = Insert(entry);
    transaction.Commit();
}

void HistoryWriter::Finish() {
    Statement(database_, "UPDATE edits SET state = ? WHERE number = ?")
        .Bind(static_cast<std::int64_t>(EditState::Saved))
        .Bind(begun_)
        .Next();
}

void HistoryWriter::RecordSaved(EditNote const& note, std::string const& before,
                                std::string const& after) {
    std::vector<HistoryEntry> const last = Last();
    bool const isThere =
        !last.empty() && last.front().state == EditState::Begun &&
        last.front().note.user == note.user && last.front().note.command == note.command &&
        last.front().before == DigestOf(before) && last.front().after == DigestOf(after);
    if (isThere)
        begun_ = last.front().number;
    else
        Begin(note, before, after);
    Finish();
}

void HistoryWriter::Settle(std::string const& current) {
    Transaction transaction(database_);
    SettleLast(DigestOf(current));
    transaction.Commit();
}

/// Makes room: who did what, and when, is kept longer than the states of the file.
void HistoryWriter::DropOldest() {
    std::int64_t const kept =
        database_.Number("SELECT value FROM settings WHERE name = 'mebibytes'");
    std::int64_t const most =
        (kept > 0 ? kept : kUsualMebibytes) * 1024 * 1024 / database_.Number("PRAGMA page_size");
    auto const isTooLarge = [&] {
        return database_.Number("PRAGMA page_count") - database_.Number("PRAGMA freelist_count") >
               most;
    };
    while (isTooLarge() && states_.DropOldest()) {
    }
    constexpr std::int64_t kFewest = 1000;
    while (isTooLarge() && database_.Number("SELECT count(*) FROM edits") > kFewest)
        database_.Run("DELETE FROM edits WHERE number IN "
                      "(SELECT number FROM edits ORDER BY number LIMIT 100)");
}

void HistoryWriter::KeepAtMost(std::int64_t mebibytes) {
    Statement(database_, "INSERT OR REPLACE INTO settings VALUES ('mebibytes', ?)")
        .Bind(mebibytes)
        .Next();
}

} // namespace CallRecordingUtils
