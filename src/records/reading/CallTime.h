// The time of a call as call records have it.

#ifndef RECORDS_READING_CALLTIME_H
#define RECORDS_READING_CALLTIME_H

#include <cstdint>
#include <optional>
#include <string>

namespace CallRecordingUtils {

/// Local time: the seconds since a clock on the wall showed the beginning of 1970.
using CallTime = std::int64_t;

/// Seconds since 1970. These tell apart what a clock shows twice when it is set back for winter.
using Instant = std::int64_t;

/// An instant, and what a clock on the wall shows then.
struct Moment {
    Instant instant = 0;
    CallTime shown = 0;
};

/// The moment at an instant, in this computer's zone.
Moment MomentAt(Instant instant);

/// The instants between which a clock shows a time: mostly the same one.
struct Instants {
    Instant earliest = 0, latest = 0;
};

/// When a clock of this computer's zone shows this. Around a time that is skipped when clocks are
/// set forward.
Instants InstantsOf(CallTime shown);

/// A time as a file has it.
struct WrittenTime {
    CallTime shown = 0;
    std::optional<Instant> instant; ///< Where it is written with a zone or as seconds since 1970.
};

/// Reads 2026-11-25 03:08:16, also with T between date and time, with "/", without seconds, with
/// a fraction of a second, with AM or PM, or the date alone; 25.11.2026 03:08:16; 20261125030816;
/// seconds, milliseconds or microseconds since 1970. A time with a zone (Z, UTC, +01:00) or since
/// 1970 is converted to this computer's zone; every other one is taken as local time already. A
/// year has four digits.
std::optional<WrittenTime> ReadCallTime(std::string const& text);

/// Reads a time in the format of strptime, with what may follow as above.
std::optional<WrittenTime> ReadCallTimeAs(std::string const& text, std::string const& format);

/// Makes a zone the one of this process: Europe/Berlin, UTC, +01:00. Returns false if there is none
/// of this name.
bool UseZone(std::string const& zone);

/// 2026-11-25 03:08:16
std::string TimeText(CallTime time);

} // namespace CallRecordingUtils

#endif
