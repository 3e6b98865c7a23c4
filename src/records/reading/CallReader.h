// Reads a file of call records, whatever its format.

#ifndef RECORDS_READING_CALLREADER_H
#define RECORDS_READING_CALLREADER_H

#include <memory>
#include <string>

#include "records/reading/CallRecord.h"
#include "records/reading/Columns.h"
#include "text/Input.h"
#include "text/Lines.h"

namespace CallRecordingUtils {

/// How to read call files.
struct CallFormat {
    ColumnNames names;
    bool hasHeader = true; ///< Whether separated values begin with a row of column names.
};

class CallReader {
  public:
    /// Opens the file and finds out its format: JSON begins with "{". Throws an Error that names
    /// the file.
    CallReader(std::string const& path, CallFormat const& format);

    /// Reads the next record, or a line that cannot be read as one, with the reason. When the rest
    /// of the file cannot be read, that is the last such line. Returns false at the end.
    bool Next(CallRecord& record);

    Input const& File() const { return input_; }

  private:
    void Open(std::string const& path, CallFormat const& format);

    Input input_;
    Lines lines_;
    std::unique_ptr<RecordReader> records_; // Null for an empty file.
};

} // namespace CallRecordingUtils

#endif
