// A call record, and the interface of the readers for each format.

#ifndef RECORDS_READING_CALLRECORD_H
#define RECORDS_READING_CALLRECORD_H

#include <array>
#include <cstddef>
#include <string>

namespace CallRecordingUtils {

/// What is read of a call record. Only the first two are required.
enum Column : std::size_t {
    kColumnFrom,
    kColumnTo,
    kColumnFromType,
    kColumnToType,
    kColumnTime,
    kColumnCount
};

struct CallRecord {
    std::size_t line = 0;                         ///< Where it begins, counted from 1.
    std::string problem;                          ///< Why it cannot be read; empty when it can.
    std::array<std::string, kColumnCount> values; ///< As the file has them.
};

class RecordReader {
  public:
    RecordReader() = default;
    RecordReader(RecordReader const&) = delete;
    RecordReader& operator=(RecordReader const&) = delete;
    virtual ~RecordReader() = default;

    /// Reads the next record, or a line that cannot be read as one. Returns false at the end.
    /// Throws as Lines does.
    virtual bool Next(CallRecord& record) = 0;
};

} // namespace CallRecordingUtils

#endif
