// Times as people write and read them.

#ifndef CALLRECORDINGCTL_HISTORY_WHEN_H
#define CALLRECORDINGCTL_HISTORY_WHEN_H

#include <cstdint>
#include <string>

namespace callrecordingctl {

/// What ParseWhen takes, for help texts.
constexpr char kWhenHelp[] = "A time: 2026-11-25, '2026-11-25 14:00', 14:00,\n"
                             "today, yesterday, monday, 3h, 2d or 1w (ago)";

/// Returns the seconds since 1970 that text means, local time; a day begins at 0:00. Throws a
/// Failure that names option when it means none.
std::int64_t ParseWhen(std::string const& option, std::string const& text);

/// 2026-11-25 14:03:11, local time.
std::string WhenText(std::int64_t seconds);

} // namespace callrecordingctl

#endif
