// Reads and writes times.

#include "records/reading/CallTime.h"

#include <algorithm>
#include <ctime>
#include <string_view>

namespace CallRecordingUtils {
namespace {

constexpr char kDigits[] = "0123456789";

/// The local time at an instant, in this computer's zone.
std::optional<CallTime> LocalTime(std::time_t instant) {
    std::tm parts{};
    if (localtime_r(&instant, &parts) == nullptr)
        return std::nullopt;
    return timegm(&parts);
}

/// Seconds since 1970 have 9 or 10 digits, for times from 1973 to 2286.
std::optional<CallTime> ReadSince1970(std::string const& text) {
    std::size_t const digits = std::string_view(text).find_first_not_of(kDigits);
    std::string const whole = text.substr(0, digits);
    if (digits != std::string::npos &&
        (text[digits] != '.' || text.find_first_not_of(kDigits, digits + 1) != std::string::npos))
        return std::nullopt;
    std::int64_t divisor = 0;
    if (whole.size() == 9 || whole.size() == 10)
        divisor = 1;
    else if (whole.size() == 13)
        divisor = 1000;
    else if (whole.size() == 16)
        divisor = 1000000;
    if (divisor == 0)
        return std::nullopt;
    return LocalTime(std::stoll(whole) / divisor);
}

/// Reads what follows the seconds: nothing, a fraction, a zone.
std::optional<CallTime> WithZone(std::tm parts, std::string_view rest) {
    if (!rest.empty() && (rest[0] == '.' || rest[0] == ','))
        rest.remove_prefix(std::min(rest.find_first_not_of(kDigits, 1), rest.size()));
    rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
    int const day = parts.tm_mday;
    CallTime const time = timegm(&parts);
    if (parts.tm_mday != day) // There is no such day in the month.
        return std::nullopt;
    if (rest.empty())
        return time;
    if (rest == "UTC" || rest == "GMT")
        return LocalTime(time);
    std::tm zone{};
    std::string const text(rest);
    char const* const end = strptime(text.c_str(), "%z", &zone);
    return end != nullptr && *end == '\0' ? LocalTime(time - zone.tm_gmtoff) : std::nullopt;
}

} // namespace

std::optional<CallTime> ReadCallTime(std::string const& text) {
    if (auto const time = ReadSince1970(text))
        return time;
    constexpr char const* kFormats[] = {
        "%Y-%m-%d %H:%M:%S", "%Y-%m-%dT%H:%M:%S", "%Y/%m/%d %H:%M:%S", "%d.%m.%Y %H:%M:%S",
        "%Y-%m-%d %H:%M",    "%Y-%m-%dT%H:%M",    "%Y/%m/%d %H:%M",    "%d.%m.%Y %H:%M",
        "%Y%m%d%H%M%S",      "%Y-%m-%d",          "%Y/%m/%d",          "%d.%m.%Y"};
    for (char const* const format : kFormats) {
        std::tm parts{};
        char const* const rest = strptime(text.c_str(), format, &parts);
        if (rest == nullptr)
            continue;
        if (auto const time = WithZone(parts, rest))
            return time;
    }
    return std::nullopt;
}

std::string TimeText(CallTime time) {
    std::time_t const seconds = time;
    std::tm parts{};
    char text[64];
    if (gmtime_r(&seconds, &parts) == nullptr)
        return "";
    return {text, std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &parts)};
}

} // namespace CallRecordingUtils
