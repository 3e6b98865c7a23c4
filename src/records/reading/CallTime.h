// The time of a call, as call records write it.

#ifndef RECORDS_READING_CALLTIME_H
#define RECORDS_READING_CALLTIME_H

#include <cstdint>
#include <optional>
#include <string>

namespace CallRecordingUtils {

/// What a clock on the wall shows: its seconds since it showed the beginning of 1970.
using CallTime = std::int64_t;

/// Reads 2026-11-25 03:08:16, also with T between date and time, with "/", without seconds, with
/// a fraction of them, or the date alone; 25.11.2026 03:08:16; 20261125030816; seconds,
/// milliseconds and microseconds since 1970. A time with a zone (Z, UTC, +01:00) and one since 1970
/// is turned into this computer's zone; others are taken as they stand.
std::optional<CallTime> ReadCallTime(std::string const& text);

/// 2026-11-25 03:08:16
std::string TimeText(CallTime time);

} // namespace CallRecordingUtils

#endif
