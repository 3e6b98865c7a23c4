// Keeps the states of the rule file and the edits between them in SQLite.

#include "administration/history/History.h"

#include <cerrno>
#include <cstring>
#include <ctime>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fmt/format.h>
#include <sqlite3.h>
#include <zlib.h>

#include "administration/inspection/Digest.h"

namespace CallRecordingUtils {
namespace {

constexpr std::int64_t kUsualMebibytes = 16;
constexpr int kBusyMilliseconds = 5000;

// An entry without an after is begun and not finished. The greatest size stands in user_version.
constexpr char kTables[] = R"(
PRAGMA auto_vacuum = FULL;
CREATE TABLE states (digest TEXT PRIMARY KEY, size INTEGER NOT NULL, text BLOB NOT NULL);
CREATE TABLE edits (number INTEGER PRIMARY KEY AUTOINCREMENT, seconds INTEGER NOT NULL,
    user TEXT NOT NULL, command TEXT NOT NULL, before TEXT NOT NULL, after TEXT NOT NULL,
    undone INTEGER NOT NULL);
)";

std::string Compressed(std::string const& text) {
    uLongf size = compressBound(static_cast<uLong>(text.size()));
    std::string packed(size, '\0');
    if (compress(reinterpret_cast<Bytef*>(packed.data()), &size,
                 reinterpret_cast<Bytef const*>(text.data()),
                 static_cast<uLong>(text.size())) != Z_OK)
        throw std::bad_alloc();
    packed.resize(size);
    return packed;
}

/// Nothing when packed is damaged.
std::optional<std::string> Uncompressed(std::string const& packed, std::size_t size) {
    std::string text(size, '\0');
    uLongf length = static_cast<uLong>(size);
    if (uncompress(reinterpret_cast<Bytef*>(text.data()), &length,
                   reinterpret_cast<Bytef const*>(packed.data()),
                   static_cast<uLong>(packed.size())) != Z_OK ||
        length != size)
        return std::nullopt;
    return text;
}

} // namespace

/// One SQL statement with its values; read row by row.
class History::Statement {
  public:
    Statement(History& history, char const* sql) : history_(history) {
        Require(sqlite3_prepare_v2(history.database_, sql, -1, &statement_, nullptr) == SQLITE_OK);
    }
    ~Statement() { sqlite3_finalize(statement_); }
    Statement(Statement const&) = delete;
    Statement& operator=(Statement const&) = delete;

    Statement& Bind(std::int64_t value) {
        Require(sqlite3_bind_int64(statement_, ++bound_, value) == SQLITE_OK);
        return *this;
    }
    Statement& Bind(std::string const& value) {
        Require(sqlite3_bind_text(statement_, ++bound_, value.data(),
                                  static_cast<int>(value.size()), SQLITE_TRANSIENT) == SQLITE_OK);
        return *this;
    }
    Statement& BindBytes(std::string const& value) {
        Require(sqlite3_bind_blob(statement_, ++bound_, value.data(),
                                  static_cast<int>(value.size()), SQLITE_TRANSIENT) == SQLITE_OK);
        return *this;
    }

    /// Whether there is another row.
    bool Next() {
        int const result = sqlite3_step(statement_);
        Require(result == SQLITE_ROW || result == SQLITE_DONE);
        return result == SQLITE_ROW;
    }
    std::int64_t Number(int column) { return sqlite3_column_int64(statement_, column); }
    std::string Text(int column) {
        auto const* const bytes = static_cast<char const*>(sqlite3_column_blob(statement_, column));
        return bytes == nullptr ? ""
                                : std::string(bytes, static_cast<std::size_t>(
                                                         sqlite3_column_bytes(statement_, column)));
    }

  private:
    void Require(bool isDone) const {
        if (!isDone)
            throw HistoryError(history_.file_ + ": " + sqlite3_errmsg(history_.database_));
    }

    History& history_;
    sqlite3_stmt* statement_ = nullptr;
    int bound_ = 0;
};

namespace {

/// Makes the file with the owner and the mode of the rule file: it holds the same rules.
void MakeFile(std::string const& file, std::string const& ruleFile) {
    int const made = open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (made < 0)
        return; // It is there, or opening it says why not.
    struct stat status {};
    if (stat(ruleFile.c_str(), &status) == 0 &&
        (fchown(made, status.st_uid, status.st_gid) == 0 || geteuid() != 0))
        (void)fchmod(made, status.st_mode & 0666);
    close(made);
}

} // namespace

History::History(std::string const& path, bool canWrite)
    : file_(path + ".history"), ruleFile_(path) {
    if (canWrite)
        MakeFile(file_, path);
    else if (access(file_.c_str(), F_OK) != 0 && errno == ENOENT)
        return; // Nothing has been recorded.
    int const flags = canWrite ? SQLITE_OPEN_READWRITE : SQLITE_OPEN_READONLY;
    if (sqlite3_open_v2(file_.c_str(), &database_, flags, nullptr) != SQLITE_OK) {
        std::string const reason = sqlite3_errmsg(database_);
        sqlite3_close(database_);
        throw HistoryError(file_ + ": " + reason);
    }
    sqlite3_busy_timeout(database_, kBusyMilliseconds);
    try {
        if (canWrite && !HasTables())
            Run(kTables);
    } catch (...) {
        sqlite3_close(database_);
        throw;
    }
}

History::~History() {
    sqlite3_close(database_);
}

void History::Run(char const* sql) {
    if (sqlite3_exec(database_, sql, nullptr, nullptr, nullptr) != SQLITE_OK)
        throw HistoryError(file_ + ": " + sqlite3_errmsg(database_));
}

std::int64_t History::Number(char const* sql) {
    Statement statement(*this, sql);
    return statement.Next() ? statement.Number(0) : 0;
}

bool History::HasTables() {
    return database_ != nullptr && Number("SELECT count(*) FROM sqlite_master") > 0;
}

std::vector<HistoryEntry> History::Recorded() {
    std::vector<HistoryEntry> entries;
    if (!HasTables())
        return entries;
    Statement rows(*this, "SELECT number, seconds, user, command, before, after, undone FROM edits "
                          "ORDER BY number");
    while (rows.Next())
        entries.push_back({rows.Number(0), rows.Number(1), rows.Text(2), rows.Text(3), rows.Text(4),
                           rows.Text(5), rows.Number(6)});
    return entries;
}

/// The recorded entries without what a crash left unsaved, and one more for what nothing recorded.
std::vector<HistoryEntry> History::Settled(std::string const& current) {
    std::vector<HistoryEntry> entries = Recorded();
    std::string const digest = DigestOf(current);
    if (!entries.empty() && entries.back().after.empty()) {
        if (entries.back().before == digest)
            entries.pop_back(); // It was never saved.
        else
            entries.back().after = digest;
    }
    if (!entries.empty() && entries.back().after != digest) {
        struct stat status {};
        bool const isThere = stat(ruleFile_.c_str(), &status) == 0;
        entries.push_back({0, isThere ? status.st_mtime : std::time(nullptr), "", "",
                           entries.back().after, digest, 0});
    }
    return entries;
}

std::vector<HistoryEntry> History::Entries(std::string const& current) {
    return Settled(current);
}

std::optional<std::string> History::TextOf(std::string const& digest) {
    if (!HasTables())
        return std::nullopt;
    Statement row(*this,
                  "SELECT size, text, digest FROM states WHERE substr(digest, 1, length(?1)) "
                  "= ?1 LIMIT 1");
    row.Bind(digest);
    if (!row.Next())
        return std::nullopt;
    auto text = Uncompressed(row.Text(1), static_cast<std::size_t>(row.Number(0)));
    if (!text || DigestOf(*text) != row.Text(2))
        throw HistoryError(file_ + ": the state " + digest + " is damaged");
    return text;
}

void History::Keep(std::string const& text) {
    Statement(*this, "INSERT OR IGNORE INTO states (digest, size, text) VALUES (?, ?, ?)")
        .Bind(DigestOf(text))
        .Bind(static_cast<std::int64_t>(text.size()))
        .BindBytes(Compressed(text))
        .Next();
}

std::int64_t History::Insert(HistoryEntry const& entry) {
    Statement(*this, "INSERT INTO edits (seconds, user, command, before, after, undone) "
                     "VALUES (?, ?, ?, ?, ?, ?)")
        .Bind(entry.seconds)
        .Bind(entry.user)
        .Bind(entry.command)
        .Bind(entry.before)
        .Bind(entry.after)
        .Bind(entry.undone)
        .Next();
    return sqlite3_last_insert_rowid(database_);
}

/// Has what Settled finds in the database.
void History::Settle(std::string const& current) {
    std::vector<HistoryEntry> const settled = Settled(current);
    Statement(*this, "DELETE FROM edits WHERE after = '' AND before = ?")
        .Bind(DigestOf(current))
        .Next();
    Statement(*this, "UPDATE edits SET after = ? WHERE after = ''").Bind(DigestOf(current)).Next();
    if (!settled.empty() && settled.back().number == 0)
        Insert(settled.back());
    Keep(current);
}

void History::Begin(HistoryEntry entry, std::string const& before) {
    Run("BEGIN IMMEDIATE");
    Settle(before);
    entry.before = DigestOf(before);
    entry.after = "";
    pending_ = Insert(entry);
    Run("COMMIT");
}

void History::Finish(std::string const& after) {
    Run("BEGIN IMMEDIATE");
    Keep(after);
    Statement(*this, "UPDATE edits SET after = ? WHERE number = ?")
        .Bind(DigestOf(after))
        .Bind(pending_)
        .Next();
    DropOldest();
    Run("COMMIT");
}

/// Takes the oldest entries out until the rest fits; the last one stays.
void History::DropOldest() {
    std::int64_t const kept = Number("PRAGMA user_version");
    std::int64_t const most = (kept > 0 ? kept : kUsualMebibytes) * 1024 * 1024;
    while (Number("SELECT sum(length(text)) + 300 * (SELECT count(*) FROM edits) FROM states") >
               most &&
           Number("SELECT count(*) FROM edits") > 1) {
        Run("DELETE FROM edits WHERE number = (SELECT min(number) FROM edits)");
        Run("DELETE FROM states WHERE digest NOT IN (SELECT before FROM edits UNION SELECT after "
            "FROM edits)");
    }
}

void History::KeepAtMost(std::int64_t mebibytes) {
    Run(fmt::format("PRAGMA user_version = {}", mebibytes).c_str());
}

} // namespace CallRecordingUtils
