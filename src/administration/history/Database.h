// SQLite as the history uses it: a connection, and statements on it.

#ifndef ADMINISTRATION_HISTORY_DATABASE_H
#define ADMINISTRATION_HISTORY_DATABASE_H

#include <cstdint>
#include <string>

struct sqlite3;
struct sqlite3_stmt;

namespace CallRecordingUtils {

/// A connection to a database file that exists. Every operation throws an Error that names the
/// file. A change that a killed process left half done is undone when the file is opened.
class Database {
  public:
    enum class Access { Read, Write };

    Database(std::string const& file, Access access);
    ~Database();
    Database(Database const&) = delete;
    Database& operator=(Database const&) = delete;

    void Run(std::string const& sql);

    /// The first value of the first row, 0 if there is none.
    std::int64_t Number(std::string const& sql);

    /// The key of the row that was inserted last.
    std::int64_t LastKey() const;

    [[noreturn]] void Fail() const;

  private:
    friend class Statement;

    void Open(int flags);
    void Close();
    bool CanBeRead();
    void OpenCopy();

    std::string file_;
    Access access_;
    sqlite3* connection_ = nullptr;
};

/// All changes until Commit, or none.
class Transaction {
  public:
    explicit Transaction(Database& database);
    ~Transaction();
    Transaction(Transaction const&) = delete;
    Transaction& operator=(Transaction const&) = delete;

    void Commit();

  private:
    Database& database_;
    bool isOpen_ = true;
};

/// One SQL statement. Values are bound in the order of its question marks, and rows are read one by
/// one.
class Statement {
  public:
    Statement(Database& database, char const* sql);
    ~Statement();
    Statement(Statement const&) = delete;
    Statement& operator=(Statement const&) = delete;

    Statement& Bind(std::int64_t value);
    Statement& Bind(std::string const& text);
    Statement& BindBytes(std::string const& bytes);

    /// Moves to the next row, which a statement without rows takes to be run. Returns whether there
    /// is one.
    bool Next();

    /// Makes the statement as it was before values were bound, and ends its hold on the database.
    void Reset();

    std::int64_t Number(int column);
    bool IsNull(int column);

    /// A text, or bytes.
    std::string Text(int column);

  private:
    void Require(bool isDone) const;

    Database& database_;
    sqlite3_stmt* statement_ = nullptr;
    int bound_ = 0;
};

} // namespace CallRecordingUtils

#endif
