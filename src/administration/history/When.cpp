// Reads and writes times.

#include "administration/history/When.h"

#include <algorithm>
#include <array>
#include <ctime>

#include <fmt/chrono.h>
#include <fmt/format.h>

namespace CallRecordingUtils {
namespace {

std::tm Now() {
    std::time_t const now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    return local;
}

std::int64_t Midnight(int daysAgo) {
    std::tm day = Now();
    day.tm_hour = day.tm_min = day.tm_sec = 0;
    day.tm_mday -= daysAgo;
    day.tm_isdst = -1;
    return std::mktime(&day);
}

/// A number and a unit: that long ago.
std::optional<std::int64_t> Ago(std::string const& text) {
    std::size_t const digits = std::min(text.find_first_not_of("0123456789"), text.size());
    if (digits == 0 || digits > 6 || digits + 1 != text.size())
        return std::nullopt;
    constexpr std::string_view kUnits = "smhdw";
    constexpr std::array<std::int64_t, 5> kSeconds{1, 60, 3600, 86400, 604800};
    std::size_t const unit = kUnits.find(text.back());
    if (unit == std::string_view::npos)
        return std::nullopt;
    return std::time(nullptr) - std::stoll(text) * kSeconds[unit];
}

std::optional<std::int64_t> Day(std::string const& text) {
    constexpr std::array<char const*, 7> kDays{"sunday",   "monday", "tuesday", "wednesday",
                                               "thursday", "friday", "saturday"};
    if (text == "today")
        return Midnight(0);
    if (text == "yesterday")
        return Midnight(1);
    for (int day = 0; day < 7; ++day)
        if (text == kDays[static_cast<std::size_t>(day)] ||
            (text.size() == 3 &&
             std::string(kDays[static_cast<std::size_t>(day)]).compare(0, 3, text) == 0))
            return Midnight((Now().tm_wday - day + 7) % 7);
    return std::nullopt;
}

std::optional<std::int64_t> Date(std::string const& text) {
    for (char const* format : {"%Y-%m-%d %H:%M:%S", "%Y-%m-%dT%H:%M:%S", "%Y-%m-%d %H:%M",
                               "%Y-%m-%dT%H:%M", "%Y-%m-%d", "%H:%M:%S", "%H:%M"}) {
        std::tm time = Now();
        time.tm_hour = time.tm_min = time.tm_sec = 0;
        char const* const end = strptime(text.c_str(), format, &time);
        if (end == nullptr || *end != '\0')
            continue;
        time.tm_isdst = -1;
        std::tm const given = time;
        std::int64_t const seconds = std::mktime(&time); // Makes March 2nd of February 30th.
        bool const isDay = time.tm_mday == given.tm_mday && time.tm_mon == given.tm_mon;
        return isDay ? std::optional(seconds) : std::nullopt;
    }
    return std::nullopt;
}

} // namespace

std::optional<std::int64_t> ParseWhen(std::string const& text) {
    std::string plain = text;
    std::transform(plain.begin(), plain.end(), plain.begin(), [](unsigned char c) {
        return c >= 'A' && c <= 'Z' && c != 'T' ? static_cast<char>(c + 32) : static_cast<char>(c);
    });
    std::string lower = plain;
    std::replace(lower.begin(), lower.end(), 'T', 't');
    for (auto const& seconds : {Day(lower), Ago(lower), Date(plain)})
        if (seconds)
            return seconds;
    return std::nullopt;
}

std::string WhenText(std::int64_t seconds) {
    std::time_t const time = seconds;
    std::tm local{};
    localtime_r(&time, &local);
    return fmt::format("{:%Y-%m-%d %H:%M:%S}", local);
}

} // namespace CallRecordingUtils
