// A call record, and what reads one after the other from a file of some format.

#ifndef RECORDS_READING_CALLRECORD_H
#define RECORDS_READING_CALLRECORD_H

#include <array>
#include <cstddef>
#include <string>

namespace CallRecordingUtils {

/// What a call record tells; a file need have the first two only.
enum Column : std::size_t {
    kColumnFrom,
    kColumnTo,
    kColumnFromType,
    kColumnToType,
    kColumnTime,
    kColumnCount
};

struct CallRecord {
    std::size_t line = 0;                         // On which it begins, counted from 1.
    std::string problem;                          // Why the line cannot be read; empty when it can.
    std::array<std::string, kColumnCount> values; // As they stand in the file.
};

class RecordReader {
  public:
    RecordReader() = default;
    RecordReader(RecordReader const&) = delete;
    RecordReader& operator=(RecordReader const&) = delete;
    virtual ~RecordReader() = default;

    /// Reads the next record, or a line that is none. Returns false at the end. Throws as Lines do.
    virtual bool Next(CallRecord& record) = 0;
};

} // namespace CallRecordingUtils

#endif
