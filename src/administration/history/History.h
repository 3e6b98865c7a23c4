// What was done to a rule file: an SQLite database beside it, with every state that the file was
// in.

#ifndef ADMINISTRATION_HISTORY_HISTORY_H
#define ADMINISTRATION_HISTORY_HISTORY_H

#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

struct sqlite3;

namespace CallRecordingUtils {

/// The history cannot be read or written. what() names its file.
class HistoryError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// One edit. The states before and after are told by the digests of the file.
struct HistoryEntry {
    std::int64_t number;  ///< Counted from 1; 0 for one that is not recorded yet.
    std::int64_t seconds; ///< When, since 1970.
    std::string user;
    std::string command; ///< Empty for an edit made around the client.
    std::string before;
    std::string after;
    std::int64_t undone; ///< How many edits it took back.

    bool IsOutside() const { return command.empty(); }
};

/// One object for each command. Writing needs the lock of the rule file. A new state is recorded in
/// two steps, so that a crash between the record and the save shows, and is put right by whatever
/// looks at the history next.
class History {
  public:
    /// Opens the history of the rule file at path. Throws a HistoryError. One that does not exist
    /// is empty, and is made only when canWrite is true.
    History(std::string const& path, bool canWrite);
    ~History();
    History(History const&) = delete;
    History& operator=(History const&) = delete;

    /// All edits in their order, for a rule file whose text is now current. The last one leads to
    /// it: where nothing recorded does, an entry says that it was edited around the client.
    std::vector<HistoryEntry> Entries(std::string const& current);

    /// The text of the file in the state with this digest, if it is kept. Of a digest the first
    /// eight digits are enough.
    std::optional<std::string> TextOf(std::string const& digest);

    /// Before a save: entry is about to be made to the file with the text before. Its numbers and
    /// digests are found here.
    void Begin(HistoryEntry entry, std::string const& before);

    /// After the save.
    void Finish(std::string const& after);

    /// How large the file may become, in MiB, from the next edit on.
    void KeepAtMost(std::int64_t mebibytes);

  private:
    class Statement;

    void Run(char const* sql);
    bool HasTables();
    std::vector<HistoryEntry> Recorded();
    std::vector<HistoryEntry> Settled(std::string const& current);
    void Settle(std::string const& current);
    void Keep(std::string const& text);
    std::int64_t Insert(HistoryEntry const& entry);
    void DropOldest();
    std::int64_t Number(char const* sql);

    std::string file_;
    std::string ruleFile_;
    sqlite3* database_ = nullptr;
    std::int64_t pending_ = 0; // The entry of Begin.
};

} // namespace CallRecordingUtils

#endif
