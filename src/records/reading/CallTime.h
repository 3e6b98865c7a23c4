// The time of a call as call records have it.

#ifndef RECORDS_READING_CALLTIME_H
#define RECORDS_READING_CALLTIME_H

#include <cstdint>
#include <optional>
#include <string>

namespace CallRecordingUtils {

/// Local time: the seconds since a clock on the wall showed the beginning of 1970.
using CallTime = std::int64_t;

/// Reads 2026-11-25 03:08:16, also with T between date and time, with "/", without seconds, with
/// a fraction of a second, with AM or PM, or the date alone; 25.11.2026 03:08:16; 20261125030816;
/// seconds, milliseconds or microseconds since 1970. A time with a zone (Z, UTC, +01:00) or since
/// 1970 is converted to this computer's zone; every other one is taken as local time already. A
/// year has four digits.
std::optional<CallTime> ReadCallTime(std::string const& text);

/// Reads a time in the format of strptime, with what may follow as above.
std::optional<CallTime> ReadCallTimeAs(std::string const& text, std::string const& format);

/// Makes a zone the one of this process: Europe/Berlin, UTC, +01:00. Returns false if there is none
/// of this name.
bool UseZone(std::string const& zone);

/// 2026-11-25 03:08:16
std::string TimeText(CallTime time);

} // namespace CallRecordingUtils

#endif
