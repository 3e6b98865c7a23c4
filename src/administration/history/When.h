// Times as people write and read them.

#ifndef ADMINISTRATION_HISTORY_WHEN_H
#define ADMINISTRATION_HISTORY_WHEN_H

#include <cstdint>
#include <optional>
#include <string>

namespace CallRecordingUtils {

/// What ParseWhen takes, for help texts.
constexpr char kWhenHelp[] = "A time: 2026-11-25, '2026-11-25 14:00', 14:00,\n"
                             "today, yesterday, monday, 3h, 2d or 1w (ago)";

/// Returns the seconds since 1970 that text means, in local time; a day begins at 0:00. Nothing
/// when text is not a time.
std::optional<std::int64_t> ParseWhen(std::string const& text);

/// 2026-11-25 14:03:11, local time.
std::string WhenText(std::int64_t seconds);

} // namespace CallRecordingUtils

#endif
