// Call records in files of comma- or semicolon-separated values.

#ifndef RECORDS_READING_CSVRECORDS_H
#define RECORDS_READING_CSVRECORDS_H

#include <array>
#include <string>

#include "records/reading/CallRecord.h"
#include "records/reading/Columns.h"
#include "text/CsvRows.h"

namespace CallRecordingUtils {

/// Takes the calls from the rows. The columns are found by the names in the first row or, in a file
/// without such a row, by the numbers that names holds.
class CsvRecords : public RecordReader {
  public:
    /// Throws an Error that names path when the column of either side is not found.
    CsvRecords(Lines& lines, ColumnNames const& names, bool hasHeader, std::string const& path);

    bool Next(CallRecord& record) override;

  private:
    void FindColumns(ColumnNames const& names, bool hasHeader, std::string const& path);

    CsvRows rows_;
    std::array<std::size_t, kColumnCount> columns_{};
};

} // namespace CallRecordingUtils

#endif
