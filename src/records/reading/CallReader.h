// One call file of any format.

#ifndef RECORDS_READING_CALLREADER_H
#define RECORDS_READING_CALLREADER_H

#include <memory>
#include <string>

#include "records/reading/CallRecord.h"
#include "records/reading/Columns.h"
#include "text/Input.h"
#include "text/Lines.h"

namespace CallRecordingUtils {

/// How call files are to be read.
struct CallFormat {
    ColumnNames names;
    bool hasHeader = true; // Of separated values; JSON has its names in each line.
};

class CallReader {
  public:
    /// Opens the file, and finds out what format it has: JSON begins with "{". Throws a
    /// CallFileError.
    CallReader(std::string const& path, CallFormat const& format);

    /// Reads the next record, or a line that is none. Where the rest of the file cannot be read,
    /// that is the last such line. Returns false at the end.
    bool Next(CallRecord& record);

    Input const& File() const { return input_; }

  private:
    void Open(std::string const& path, CallFormat const& format);

    Input input_;
    Lines lines_;
    std::unique_ptr<RecordReader> records_; // None for an empty file.
};

} // namespace CallRecordingUtils

#endif
