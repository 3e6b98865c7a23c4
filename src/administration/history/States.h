// The texts that the rule file has had, compressed, in a table of the history's database.

#ifndef ADMINISTRATION_HISTORY_STATES_H
#define ADMINISTRATION_HISTORY_STATES_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "administration/history/Database.h"

namespace CallRecordingUtils {

/// A state is known by the digest of its text. Now and then one is stored whole, and those that
/// follow as their differences from it, so each needs only itself and that one to be read.
class States {
  public:
    explicit States(Database& database) : database_(database) {}

    /// Creates the table.
    void Create();

    /// The text of the state whose digest begins with these digits; nothing if it is not kept.
    /// Throws an Error if it is damaged; only the checksums of the compression are looked at unless
    /// the digest is to be compared, which takes longer than all the rest.
    std::optional<std::string> TextOf(std::string const& digest, bool comparesDigest);

    /// Stores text, which has this digest, unless it is stored already.
    void Keep(std::string const& text, std::string const& digest);

    /// Removes the oldest whole state with all that need it. Returns false, without removing any,
    /// if no other whole state is there.
    bool DropOldest();

  private:
    struct Row {
        std::int64_t key, base; // Without a base 0.
        std::string digest, data;
        std::size_t size, length;
    };

    std::optional<Row> Find(std::string const& digest);
    std::string const& WholeText(std::int64_t key);
    std::optional<std::int64_t> NewestWhole();
    void Insert(std::string const& digest, std::size_t size, std::optional<std::int64_t> base,
                std::size_t length, std::string const& data);

    Database& database_;
    std::optional<Statement> find_;
    std::int64_t cachedKey_ = 0; // Of the whole state that was read last; keys begin at 1.
    std::string cachedText_;
};

} // namespace CallRecordingUtils

#endif
