// A call record, and the interface of the readers for each kind of file.

#ifndef RECORDS_READING_CALLRECORD_H
#define RECORDS_READING_CALLRECORD_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <callrecordingutils/CallRecordingRuleParams.h>

#include "records/reading/CallTime.h"

namespace CallRecordingUtils {

/// What is read of a call record. Only the first two are required.
enum Column : std::size_t {
    kColumnFrom,
    kColumnTo,
    kColumnFromType,
    kColumnToType,
    kColumnTime,
    kColumnDate, // Of a time of the day.
    kColumnCount
};

struct CallRecord {
    struct Side {
        std::string address;          ///< To ask about.
        std::optional<CallType> type; ///< Nothing for a party.
        bool hadName = false;         ///< There was a name around the address, which is left out.
    };

    std::size_t line = 0;                         ///< Where it begins, counted from 1.
    std::string problem;                          ///< Why it cannot be read; empty when it can.
    std::array<std::string, kColumnCount> values; ///< As the file has them.
    /// Begins with the values of the columns that CallFormat::wanted names, in that order; "" where
    /// a record has no such value. Empty when the line is no record.
    std::vector<std::string> wanted;
    std::uint32_t lacks = 0; ///< Bit i: there is no column for value i of wanted.

    // What the values mean.
    Side from, to;
    std::optional<CallTime> time;
    std::optional<Instant> instant; ///< Of the time, where its value tells.
};

class RecordReader {
  public:
    RecordReader() = default;
    RecordReader(RecordReader const&) = delete;
    RecordReader& operator=(RecordReader const&) = delete;
    virtual ~RecordReader() = default;

    /// Reads the line, problem, values and wanted values of the next record, or a line that cannot
    /// be read as one. Returns false at the end. Throws as Lines does.
    virtual bool Next(CallRecord& record) = 0;

    /// Says of which columns the values are: empty where there is none, or no record was read yet.
    virtual std::array<std::string, kColumnCount> const& Used() const = 0;
};

} // namespace CallRecordingUtils

#endif
