// How to read call files, as it is asked for, and how a file was read then.

#ifndef RECORDS_READING_CALLFORMAT_H
#define RECORDS_READING_CALLFORMAT_H

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "records/reading/Columns.h"

namespace CallRecordingUtils {

struct KnownFormat;

/// A column whose values are wanted besides those that make up the call, with the option that asks
/// for it. Names are alternatives, the preferred first; a number counts columns from 1. Without an
/// option it may be missing.
struct WantedColumn {
    std::vector<std::string> names;
    std::string option;
};

/// Records count only if the value of the column is this one, or is not.
struct Condition {
    std::string column;
    bool isEqual = true;
    std::string value;
};

/// How to read call files.
struct CallFormat {
    ColumnNames names;
    bool hasHeader = true; ///< Whether separated values begin with a row of column names.
    KnownFormat const* known = nullptr; ///< Null: by the names of columns,
    bool mayGuess = true;               ///< unless the first line tells a known format.
    std::vector<WantedColumn> wanted;   ///< CallRecord::wanted begins with their values.
    std::vector<Condition> where;       ///< All of them.
    std::string distinct;               ///< A column of whose values only the first record counts.
    std::string timeFormat;             ///< As strptime takes it. Empty: the usual ones.
};

/// How a file was read.
struct CallReading {
    std::string format;        ///< What --format calls it.
    std::string title;         ///< The same for people.
    bool isGuessed = false;    ///< Nobody named the format.
    bool isDocumented = false; ///< Written from the system's documentation only.
    std::array<std::string, kColumnCount> columns; ///< Those that are used; empty: none.
    std::vector<std::string> conditions;           ///< As --where takes them.
    std::string distinct;
    std::uint64_t leftOut = 0; ///< Records that conditions and distinct left out.
    std::vector<std::string> notes;
};

} // namespace CallRecordingUtils

#endif
