// Opens databases, and passes values to SQLite and back.

#include "administration/history/Database.h"

#include <cstring>

#include <sqlite3.h>

#include "administration/history/HotJournal.h"
#include "common/Error.h"

namespace CallRecordingUtils {
namespace {

constexpr int kBusyMilliseconds = 5000;

} // namespace

Database::Database(std::string const& file, Access access) : file_(file), access_(access) {
    try {
        // For reading, too: a process that may write the file then undoes what a killed one left.
        // SQLite falls back to reading where it may not write.
        Open(SQLITE_OPEN_READWRITE);
        if (!CanBeRead())
            OpenCopy();
    } catch (...) {
        Close();
        throw;
    }
}

Database::~Database() {
    Close();
}

void Database::Open(int flags) {
    if (sqlite3_open_v2(file_.c_str(), &connection_, flags, nullptr) != SQLITE_OK)
        Fail();
    sqlite3_busy_timeout(connection_, kBusyMilliseconds);
    Run("PRAGMA temp_store = MEMORY"); // No copy of rules in the directory of temporary files.
}

void Database::Close() {
    sqlite3_close(connection_);
    connection_ = nullptr;
}

/// Returns false if a killed process has left a journal that this process is not allowed to undo.
bool Database::CanBeRead() {
    constexpr char kSql[] = "SELECT count(*) FROM sqlite_master";
    int const result = sqlite3_exec(connection_, kSql, nullptr, nullptr, nullptr) & 0xFF;
    if (result == SQLITE_OK)
        return true;
    bool const mayBeJournal =
        result == SQLITE_READONLY || result == SQLITE_CANTOPEN || result == SQLITE_IOERR;
    if (access_ == Access::Write || !mayBeJournal)
        Fail();
    return false;
}

/// Opens the database in memory, as it was before the change that was left half done.
void Database::OpenCopy() {
    Close();
    std::string const bytes = ReadBeforeJournal(file_);
    if (sqlite3_open(":memory:", &connection_) != SQLITE_OK)
        Fail();
    auto* const copy = static_cast<unsigned char*>(sqlite3_malloc64(bytes.size() + 1));
    if (copy == nullptr)
        throw std::bad_alloc();
    std::memcpy(copy, bytes.data(), bytes.size());
    auto const size = static_cast<sqlite3_int64>(bytes.size());
    if (sqlite3_deserialize(connection_, "main", copy, size, size,
                            SQLITE_DESERIALIZE_FREEONCLOSE | SQLITE_DESERIALIZE_READONLY) !=
        SQLITE_OK)
        Fail();
}

void Database::Run(std::string const& sql) {
    if (sqlite3_exec(connection_, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
        Fail();
}

std::int64_t Database::Number(std::string const& sql) {
    Statement statement(*this, sql.c_str());
    return statement.Next() ? statement.Number(0) : 0;
}

std::int64_t Database::LastKey() const {
    return sqlite3_last_insert_rowid(connection_);
}

void Database::Fail() const {
    auto const kind = access_ == Access::Read ? Error::Kind::Unreadable : Error::Kind::Unsaved;
    throw Error(kind, file_ + ": " + sqlite3_errmsg(connection_));
}

Transaction::Transaction(Database& database) : database_(database) {
    database_.Run("BEGIN IMMEDIATE");
}

Transaction::~Transaction() {
    if (!isOpen_)
        return;
    try {
        database_.Run("ROLLBACK");
    } catch (std::exception const&) {
        // SQLite has rolled it back already, or whoever opens the file next does.
    }
}

void Transaction::Commit() {
    database_.Run("COMMIT");
    isOpen_ = false;
}

Statement::Statement(Database& database, char const* sql) : database_(database) {
    Require(sqlite3_prepare_v2(database.connection_, sql, -1, &statement_, nullptr) == SQLITE_OK);
}

Statement::~Statement() {
    sqlite3_finalize(statement_);
}

Statement& Statement::Bind(std::int64_t value) {
    Require(sqlite3_bind_int64(statement_, ++bound_, value) == SQLITE_OK);
    return *this;
}

Statement& Statement::Bind(std::string const& text) {
    Require(sqlite3_bind_text64(statement_, ++bound_, text.data(), text.size(), SQLITE_TRANSIENT,
                                SQLITE_UTF8) == SQLITE_OK);
    return *this;
}

Statement& Statement::BindBytes(std::string const& bytes) {
    Require(sqlite3_bind_blob64(statement_, ++bound_, bytes.data(), bytes.size(),
                                SQLITE_TRANSIENT) == SQLITE_OK);
    return *this;
}

bool Statement::Next() {
    int const result = sqlite3_step(statement_);
    Require(result == SQLITE_ROW || result == SQLITE_DONE);
    return result == SQLITE_ROW;
}

void Statement::Reset() {
    sqlite3_reset(statement_);
    bound_ = 0;
}

std::int64_t Statement::Number(int column) {
    return sqlite3_column_int64(statement_, column);
}

bool Statement::IsNull(int column) {
    return sqlite3_column_type(statement_, column) == SQLITE_NULL;
}

std::string Statement::Text(int column) {
    auto const* const bytes = static_cast<char const*>(sqlite3_column_blob(statement_, column));
    auto const size = static_cast<std::size_t>(sqlite3_column_bytes(statement_, column));
    return bytes == nullptr ? "" : std::string(bytes, size);
}

void Statement::Require(bool isDone) const {
    if (!isDone)
        database_.Fail();
}

} // namespace CallRecordingUtils
