// Stores texts whole or as differences, whichever takes less room in the long run.

#include "administration/history/States.h"

#include <new>

#include <zlib.h>

#include "administration/history/TextDelta.h"
#include "administration/inspection/Digest.h"
#include "common/Error.h"

namespace CallRecordingUtils {
namespace {

std::string Compress(std::string const& text) {
    uLongf size = compressBound(static_cast<uLong>(text.size()));
    std::string packed(size, '\0');
    if (compress(reinterpret_cast<Bytef*>(packed.data()), &size,
                 reinterpret_cast<Bytef const*>(text.data()),
                 static_cast<uLong>(text.size())) != Z_OK)
        throw std::bad_alloc();
    packed.resize(size);
    return packed;
}

/// Nothing if packed is damaged.
std::optional<std::string> Uncompress(std::string const& packed, std::size_t size) {
    constexpr std::size_t kMostPacked = 1100; // No compressed byte becomes more of them.
    if (size > kMostPacked * (packed.size() + 1))
        return std::nullopt;
    std::string text(size, '\0');
    auto length = static_cast<uLongf>(size);
    if (uncompress(reinterpret_cast<Bytef*>(text.data()), &length,
                   reinterpret_cast<Bytef const*>(packed.data()),
                   static_cast<uLong>(packed.size())) != Z_OK ||
        length != size)
        return std::nullopt;
    return text;
}

} // namespace

void States::Create() {
    // length is the size of data before it was compressed; base the whole state that data is the
    // difference from, NULL for a whole state.
    database_.Run("CREATE TABLE states (key INTEGER PRIMARY KEY, digest TEXT NOT NULL UNIQUE, "
                  "size INTEGER NOT NULL, base INTEGER, length INTEGER NOT NULL, "
                  "data BLOB NOT NULL)");
}

std::string const& States::WholeText(std::int64_t key) {
    if (cachedKey_ == key)
        return cachedText_;
    Statement row(database_, "SELECT data, size FROM states WHERE key = ? AND base IS NULL");
    row.Bind(key);
    auto text = row.Next() ? Uncompress(row.Text(0), static_cast<std::size_t>(row.Number(1)))
                           : std::nullopt;
    cachedText_ = text ? *text : ""; // No difference from that gives the text it should.
    cachedKey_ = key;
    return cachedText_;
}

std::optional<States::Row> States::Find(std::string const& digest) {
    if (!find_)
        find_.emplace(database_,
                      "SELECT key, ifnull(base, 0), digest, data, size, length FROM states "
                      "WHERE digest >= ?1 AND digest < ?1 || 'g' LIMIT 1");
    find_->Bind(digest);
    std::optional<Row> row;
    if (find_->Next())
        row = Row{find_->Number(0),
                  find_->Number(1),
                  find_->Text(2),
                  find_->Text(3),
                  static_cast<std::size_t>(find_->Number(4)),
                  static_cast<std::size_t>(find_->Number(5))};
    find_->Reset();
    return row;
}

std::optional<std::string> States::TextOf(std::string const& digest, bool comparesDigest) {
    std::optional<Row> const row = Find(digest);
    if (!row)
        return std::nullopt;
    std::optional<std::string> text = Uncompress(row->data, row->length);
    if (text && row->base > 0)
        text = ApplyDelta(WholeText(row->base), *text, row->size);
    if (!text || text->size() != row->size || (comparesDigest && DigestOf(*text) != row->digest))
        throw Error(Error::Kind::Unreadable,
                    "the state " + StateToken(digest) + " of the rules is damaged in the history");
    return text;
}

std::optional<std::int64_t> States::NewestWhole() {
    Statement row(database_, "SELECT max(key) FROM states WHERE base IS NULL");
    return row.Next() && !row.IsNull(0) ? std::optional(row.Number(0)) : std::nullopt;
}

void States::Keep(std::string const& text, std::string const& digest) {
    Statement known(database_, "SELECT 1 FROM states WHERE digest = ?");
    if (known.Bind(digest).Next())
        return;
    if (auto const base = NewestWhole()) {
        std::string const delta = DeltaBetween(WholeText(*base), text);
        std::string const data = Compress(delta);
        Statement room(database_, "SELECT (SELECT length(data) FROM states WHERE key = ?1) - "
                                  "(SELECT total(length(data)) FROM states WHERE base = ?1)");
        room.Bind(*base);
        // Once the differences together take as much room as the whole text, a new whole one makes
        // those that follow small again.
        if (room.Next() && static_cast<std::int64_t>(data.size()) < room.Number(0))
            return Insert(digest, text.size(), base, delta.size(), data);
    }
    Insert(digest, text.size(), std::nullopt, text.size(), Compress(text));
}

void States::Insert(std::string const& digest, std::size_t size, std::optional<std::int64_t> base,
                    std::size_t length, std::string const& data) {
    Statement(database_, "INSERT INTO states (digest, size, base, length, data) "
                         "VALUES (?, ?, nullif(?, 0), ?, ?)")
        .Bind(digest)
        .Bind(static_cast<std::int64_t>(size))
        .Bind(base.value_or(0))
        .Bind(static_cast<std::int64_t>(length))
        .BindBytes(data)
        .Next();
}

bool States::DropOldest() {
    if (database_.Number("SELECT count(*) FROM states WHERE base IS NULL") < 2)
        return false;
    std::int64_t const oldest = database_.Number("SELECT min(key) FROM states WHERE base IS NULL");
    Statement(database_, "DELETE FROM states WHERE key = ?1 OR base = ?1").Bind(oldest).Next();
    cachedKey_ = 0;
    return true;
}

} // namespace CallRecordingUtils
