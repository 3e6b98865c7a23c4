// Reads a file of call records, whatever its format.

#ifndef RECORDS_READING_CALLREADER_H
#define RECORDS_READING_CALLREADER_H

#include <array>
#include <functional>
#include <memory>
#include <string>

#include "records/reading/CallFormat.h"
#include "records/reading/CallRecord.h"
#include "records/reading/RecordFilter.h"
#include "text/Input.h"
#include "text/Lines.h"

namespace CallRecordingUtils {

class CallReader {
  public:
    /// Opens the file and finds out its format. seen, unless null, is what CallFormat::distinct has
    /// seen in other files. wait is called before more of the file is read. Throws an Error that
    /// names the file.
    CallReader(std::string const& path, CallFormat const& format, SeenValues* seen = nullptr,
               std::function<void()> wait = nullptr);

    /// Reads the next record that is not left out, or a line that cannot be read as one, with the
    /// reason. When the rest of the file cannot be read, that is the last such line. Returns false
    /// at the end.
    bool Next(CallRecord& record);

    /// How the file has been read so far.
    CallReading Reading() const;

    Input const& File() const { return input_; }

  private:
    /// What the column with the types of a side turns out to hold.
    enum class TypeColumn { Unknown, Types, Other };

    void Open(std::string const& path);
    void OpenRows(std::string const& path);
    void Adopt(KnownFormat const* known);
    bool Read(CallRecord& record);
    void Interpret(CallRecord& record);
    void ReadSide(CallRecord& record, Column address, Column type, CallRecord::Side& side);
    void ReadTime(CallRecord& record) const;

    Input input_;
    Lines lines_;
    CallFormat format_; // With what the known format adds.
    SeenValues* seen_;
    bool mayGuess_ = true;
    CallReading reading_;
    RecordFilter filter_;
    std::array<TypeColumn, kColumnCount> typeColumns_{};
    std::unique_ptr<RecordReader> records_; // Null for an empty file, and behind what can be read.
    std::array<std::string, kColumnCount> used_; // Then.
};

} // namespace CallRecordingUtils

#endif
