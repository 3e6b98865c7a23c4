// The names that telephone systems give the columns of their call records.

#ifndef RECORDS_READING_COLUMNS_H
#define RECORDS_READING_COLUMNS_H

#include <array>
#include <cstddef>
#include <limits>
#include <string>
#include <string_view>

#include "records/reading/CallRecord.h"

namespace CallRecordingUtils {

/// What the columns are called. Case, blanks, "_", "-" and "." make no difference, but a column
/// whose name is equal to the byte is preferred.
class ColumnNames {
  public:
    static constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();

    /// Gives a column its only name, instead of the ones that are known.
    void Name(Column column, std::string name) { given_[column] = std::move(name); }
    std::string const& Given(Column column) const { return given_[column]; }

    /// How well name fits column: 0 is best; kNone when it is not a name of the column.
    std::size_t Rank(Column column, std::string_view name) const;

    /// The option that names the column, and the names that are known without it.
    static char const* Option(Column column);
    static std::string KnownNames(Column column);

  private:
    std::array<std::string, kColumnCount> given_;
};

} // namespace CallRecordingUtils

#endif
