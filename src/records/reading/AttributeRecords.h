// Call records as lines of "Name = value", as RADIUS servers write them: a line without
// indentation, the indented lines of a record, and an empty line.

#ifndef RECORDS_READING_ATTRIBUTERECORDS_H
#define RECORDS_READING_ATTRIBUTERECORDS_H

#include "records/reading/CallRecord.h"
#include "records/reading/NamedValues.h"
#include "text/Lines.h"

namespace CallRecordingUtils {

class AttributeRecords : public RecordReader {
  public:
    AttributeRecords(Lines& lines, CallFormat const& format) : lines_(lines), values_(format) {}

    bool Next(CallRecord& record) override;
    std::array<std::string, kColumnCount> const& Used() const override { return values_.Used(); }

  private:
    bool FindRecord();
    char const* TakeLine();

    Lines& lines_;
    NamedValues values_;
};

} // namespace CallRecordingUtils

#endif
