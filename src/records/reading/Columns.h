// The names by which call-record writers call their columns.

#ifndef RECORDS_READING_COLUMNS_H
#define RECORDS_READING_COLUMNS_H

#include <array>
#include <cstddef>
#include <limits>
#include <string>
#include <string_view>

#include "records/reading/CallRecord.h"

namespace CallRecordingUtils {

/// What the columns are called. Case, blanks, "_", "-" and "." in a name make no difference, unless
/// the name as it is given is there.
class ColumnNames {
  public:
    static constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();

    /// Gives a column its only name, in place of those of the table.
    void Name(Column column, std::string name) { given_[column] = std::move(name); }
    std::string const& Given(Column column) const { return given_[column]; }

    /// How good name is for column: 0 is the best, kNone that it is another column's.
    std::size_t Rank(Column column, std::string_view name) const;

    /// The option that names a column, and the names that are looked for without it.
    static char const* Option(Column column);
    static std::string KnownNames(Column column);

  private:
    std::array<std::string, kColumnCount> given_;
};

} // namespace CallRecordingUtils

#endif
