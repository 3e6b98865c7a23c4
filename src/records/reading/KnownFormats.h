// The call files of telephone systems that it takes more to read than the names of their columns.

#ifndef RECORDS_READING_KNOWNFORMATS_H
#define RECORDS_READING_KNOWNFORMATS_H

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "records/reading/CallRecord.h"

namespace CallRecordingUtils {

struct KnownFormat {
    using Words = std::vector<std::string>;
    enum class Kind { Rows, Json, Attributes };
    /// A column of rows without a row of names, and what its values consist of in every call:
    /// "time", "digits", "capitals", or anything.
    struct Field {
        std::string name;
        std::string consists;
    };

    std::string name;
    std::string title;
    Kind kind = Kind::Rows;
    bool isDocumented = true; ///< Written from documentation, not from a file of the system's.
    Words marks;            ///< Names of columns that tell the format, or parts of a line of JSON.
    std::vector<Field> row; ///< Without a row of names.
    std::size_t least = 0;  ///< So many fields of that row are always there.
    std::array<Words, kColumnCount> columns; ///< Preferred to the usual names.
    std::string noCall;                      ///< A row that begins with this is no call.
    Words conditions;                        ///< As --where takes them, where nobody gives others.
    Words distinct;                          ///< As --distinct does, the preferred first; likewise.
    std::string timeFormat;                  ///< Tried before the usual ones.
    bool isEncoded = false;                  ///< Values are URL-encoded.
};

std::vector<KnownFormat> const& KnownFormats();

/// The format of this name; null if there is none.
KnownFormat const* FormatNamed(std::string_view name);

/// The format of a file that begins with a row of these fields, with a line of JSON, and with
/// another line; null where that tells none. isHeader becomes whether the row has the names of the
/// columns.
KnownFormat const* FormatOfRow(std::vector<std::string> const& fields, bool& isHeader);
KnownFormat const* FormatOfJson(std::string_view text);
KnownFormat const* FormatOfLine(std::string_view line);

} // namespace CallRecordingUtils

#endif
