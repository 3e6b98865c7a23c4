// Opens a call file with the reader for its format.

#include "records/reading/CallReader.h"

#include "common/Error.h"
#include "records/reading/CsvRecords.h"
#include "records/reading/JsonRecords.h"

namespace CallRecordingUtils {

CallReader::CallReader(std::string const& path, CallFormat const& format)
    : input_(path), lines_(input_) {
    try {
        Open(path, format);
    } catch (Error const&) {
        throw;
    } catch (std::runtime_error const& error) {
        throw Error(Error::Kind::Unreadable, path + ": cannot be read: " + error.what());
    }
}

/// The first line shows the format; the reader for that format then reads the line again.
void CallReader::Open(std::string const& path, CallFormat const& format) {
    std::size_t first = std::string_view::npos;
    while (first == std::string_view::npos) {
        if (!lines_.Next())
            return;
        first = lines_.Text().find_first_not_of(" \t");
    }
    char const mark = lines_.Text()[first];
    lines_.Again();
    if (mark == '[')
        throw Error(Error::Kind::Unreadable,
                    path + ": a list of JSON; write one object a line, as \"jq -c '.[]'\" does");
    if (mark == '{')
        records_ = std::make_unique<JsonRecords>(lines_, format.names);
    else
        records_ = std::make_unique<CsvRecords>(lines_, format.names, format.hasHeader, path);
}

bool CallReader::Next(CallRecord& record) {
    if (records_ == nullptr)
        return false;
    try {
        return records_->Next(record);
    } catch (std::runtime_error const& error) {
        records_.reset();
        record.line = lines_.Number() + 1;
        record.problem = std::string("the file ends here: ") + error.what();
        return true;
    }
}

} // namespace CallRecordingUtils
