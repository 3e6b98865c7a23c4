// Call records as JSON, one object a line.

#ifndef RECORDS_READING_JSONRECORDS_H
#define RECORDS_READING_JSONRECORDS_H

#include <string>
#include <unordered_map>
#include <vector>

#include "records/reading/CallRecord.h"
#include "records/reading/Columns.h"
#include "text/Lines.h"

namespace CallRecordingUtils {

/// Finds the values of an object by their names; a value of an object within it has both names with
/// a
/// "." between them. Lists are skipped.
class JsonRecords : public RecordReader {
  public:
    JsonRecords(Lines& lines, ColumnNames const& names) : lines_(lines), names_(names) {}

    bool Next(CallRecord& record) override;

  private:
    friend class JsonHandler;
    struct Fit {
        Column column;
        std::size_t rank;
    };

    std::vector<Fit> const& FitsOf(std::string const& name);
    void Take(std::string const& name, std::string_view value);
    void Parse(CallRecord& record);

    Lines& lines_;
    ColumnNames names_;
    std::unordered_map<std::string, std::vector<Fit>> fits_; // By the names seen so far.
    CallRecord* record_ = nullptr;
    std::array<std::size_t, kColumnCount> ranks_{}; // Of the values taken so far.
};

} // namespace CallRecordingUtils

#endif
