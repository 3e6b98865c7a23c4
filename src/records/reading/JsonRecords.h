// Call records as JSON: objects, one or more a line, or over several lines, or in a list.

#ifndef RECORDS_READING_JSONRECORDS_H
#define RECORDS_READING_JSONRECORDS_H

#include <functional>
#include <string>
#include <string_view>

#include "records/reading/CallRecord.h"
#include "records/reading/NamedValues.h"
#include "text/Lines.h"

namespace CallRecordingUtils {

/// Finds the values of an object by their names; a value of an object within it has both names with
/// a "." between them. Objects in a list are named as the list is, and of values with equal names
/// the last counts.
class JsonRecords : public RecordReader {
  public:
    /// first is called with the first object, before its values are taken.
    JsonRecords(Lines& lines, CallFormat const& format, std::function<void(std::string_view)> first)
        : lines_(lines), values_(format), first_(std::move(first)) {}

    bool Next(CallRecord& record) override;
    std::array<std::string, kColumnCount> const& Used() const override { return values_.Used(); }

  private:
    /// What may stand between objects.
    char const* Between() const { return isList_ ? " \t,]" : " \t"; }
    bool FindObject();
    void ReadObject(CallRecord& record);
    void ReadOverLines(CallRecord& record);
    bool EndsAt(std::string_view text, std::size_t size);
    bool Parse(std::string_view text, CallRecord& record);

    Lines& lines_;
    NamedValues values_;
    std::function<void(std::string_view)> first_;
    std::string_view text_; // From where the object begins to the end of its line.
    bool isList_ = false;
    // Whether objects go on over lines shows when some do. It costs time to look for their ends.
    int trust_ = 1;
    bool isSkipping_ = false; // What belongs to an object that is not closed.
};

} // namespace CallRecordingUtils

#endif
