// The names that telephone systems give the columns of their call records.

#ifndef RECORDS_READING_COLUMNS_H
#define RECORDS_READING_COLUMNS_H

#include <array>
#include <cstddef>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "records/reading/CallRecord.h"

namespace CallRecordingUtils {

/// A name as it is compared: without capitals, blanks, "_", "-" and ".".
std::string PlainName(std::string_view name);

/// How well a name fits the first of names that it fits: 0 is best, ColumnNames::kNone is not at
/// all.
std::size_t RankAmong(std::vector<std::string> const& names, std::string_view name);

/// What the columns are called. Case, blanks, "_", "-" and "." make no difference, but a column
/// whose name is equal to the byte is preferred.
class ColumnNames {
  public:
    static constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();

    /// Gives a column its only name, instead of the ones that are known.
    void Name(Column column, std::string name) { given_[column] = std::move(name); }
    std::string const& Given(Column column) const { return given_[column]; }

    /// Names that are preferred to those that are known anyway.
    void Prefer(Column column, std::vector<std::string> names) {
        preferred_[column] = std::move(names);
    }

    /// How well name fits column: 0 is best; kNone when it is not a name of the column.
    std::size_t Rank(Column column, std::string_view name) const;

    /// The option that names the column, and the names that are known without it.
    static char const* Option(Column column);
    static std::string KnownNames(Column column);

  private:
    std::array<std::string, kColumnCount> given_;
    std::array<std::vector<std::string>, kColumnCount> preferred_;
};

} // namespace CallRecordingUtils

#endif
