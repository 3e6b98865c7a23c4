// Call records in rows of separated values.

#ifndef RECORDS_READING_CSVRECORDS_H
#define RECORDS_READING_CSVRECORDS_H

#include <array>
#include <string>
#include <vector>

#include "records/reading/CallFormat.h"
#include "records/reading/CallRecord.h"
#include "text/CsvRows.h"

namespace CallRecordingUtils {

/// Takes the calls from the rows. The columns are found by their names or, in a file without names,
/// by the numbers that the format names instead.
class CsvRecords : public RecordReader {
  public:
    /// Reads the first row. Throws an Error that names path when it is none.
    CsvRecords(Lines& lines, CallFormat const& format, std::string path);

    std::vector<std::string> const& FirstRow() const { return names_; }
    /// Whether the columns of both sides are among these names.
    bool AreNames(std::vector<std::string> const& names) const;

    /// Finds the columns: by the first row or, where that is a call, by names, which may be none.
    /// Throws an Error if the column of a side, or one that is wanted, is not there.
    void BeginBehindNames();
    void BeginWithCall(std::vector<std::string> names);

    bool Next(CallRecord& record) override;
    std::array<std::string, kColumnCount> const& Used() const override { return used_; }

  private:
    std::vector<std::string> Fields() const;
    std::size_t Find(std::size_t place) const;
    std::string FindColumns();
    std::string NoColumn(std::size_t place) const;
    bool IsNoCall();
    bool TakeNames();
    bool HasSplitAQuote() const;
    void Take(CallRecord& record);
    void RefuseWhatAQuoteSwallowed();

    CallFormat const& format_;
    std::string const path_;
    CsvRows rows_;
    std::vector<std::string> names_;
    bool hasNames_ = false;      // In the file, that is.
    std::size_t fieldCount_ = 0; // Of a row, as far as is known.
    std::vector<std::size_t>
        where_; // The columns in the row, those that are wanted behind the others.
    std::array<std::string, kColumnCount> used_;
    bool isFirstACall_ = false; // And is to be returned next.
    std::string lost_;          // What is missing since a row of names without it.
};

} // namespace CallRecordingUtils

#endif
