// Reads and writes times.

#include "records/reading/CallTime.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <string_view>

#include <fmt/format.h>

namespace CallRecordingUtils {
namespace {

constexpr char kDigits[] = "0123456789";

/// What a clock shows at an instant, in this computer's zone.
std::optional<CallTime> ShownAt(Instant instant) {
    std::time_t const seconds = instant;
    std::tm parts{};
    if (localtime_r(&seconds, &parts) == nullptr)
        return std::nullopt;
    return timegm(&parts);
}

std::optional<WrittenTime> TimeAt(Instant instant) {
    std::optional<CallTime> const shown = ShownAt(instant);
    return shown ? std::optional<WrittenTime>({*shown, instant}) : std::nullopt;
}

/// Reads 2026-11-25 03:08:16, which nearly every record has, at a tenth of the cost of strptime.
std::optional<CallTime> ReadUsual(std::string const& text) {
    constexpr std::string_view kForm = "dddd-dd-dd dd:dd:dd";
    if (text.size() != kForm.size())
        return std::nullopt;
    int numbers[6] = {};
    std::size_t number = 0;
    for (std::size_t at = 0; at < kForm.size(); ++at)
        if (kForm[at] != 'd' && (kForm[at] == text[at] || (kForm[at] == ' ' && text[at] == 'T')))
            ++number;
        else if (kForm[at] == 'd' && text[at] >= '0' && text[at] <= '9')
            numbers[number] = numbers[number] * 10 + (text[at] - '0');
        else
            return std::nullopt;
    auto const [year, month, day, hour, minute, second] = numbers;
    if (year < 1970 || month < 1 || month > 12 || day < 1 || day > 28 || hour > 23 || minute > 59 ||
        second > 59)
        return std::nullopt;
    // Days since 1970: years begin with March, so that the leap day is the last one.
    int const years = year - (month < 3 ? 1 : 0);
    int const months = (month + 9) % 12;
    CallTime const days = CallTime{years} * 365 + years / 4 - years / 100 + years / 400 +
                          (months * 153 + 2) / 5 + day - 1 - 719468;
    return ((days * 24 + hour) * 60 + minute) * 60 + second;
}

/// Seconds since 1970 have 9 or 10 digits, for times from 1973 to 2286.
std::optional<WrittenTime> ReadSince1970(std::string const& text) {
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
    return TimeAt(std::stoll(whole) / divisor);
}

void SkipBlanks(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
}

/// Takes AM or PM off rest. Returns false if the hour is none of those that have it.
bool TakeHalfOfDay(std::tm& parts, std::string_view& rest) {
    if (rest.size() < 2 || (rest[1] | 0x20) != 'm' || (rest.size() > 2 && rest[2] != ' '))
        return true;
    char const half = static_cast<char>(rest[0] | 0x20);
    if (half != 'a' && half != 'p')
        return true;
    bool const isHour = parts.tm_hour >= 1 && parts.tm_hour <= 12;
    parts.tm_hour = parts.tm_hour % 12 + (half == 'p' ? 12 : 0);
    rest.remove_prefix(2);
    SkipBlanks(rest);
    return isHour;
}

/// Reads what follows the seconds: nothing, a fraction, AM or PM, a zone.
std::optional<WrittenTime> WithRest(std::tm parts, std::string_view rest) {
    if (!rest.empty() && (rest[0] == '.' || rest[0] == ','))
        rest.remove_prefix(std::min(rest.find_first_not_of(kDigits, 1), rest.size()));
    SkipBlanks(rest);
    constexpr int kFirstYear = 1900; // A year of two digits is one of the Romans'.
    if (parts.tm_year + 1900 < kFirstYear || !TakeHalfOfDay(parts, rest))
        return std::nullopt;
    int const day = parts.tm_mday;
    CallTime const time = timegm(&parts);
    if (parts.tm_mday != day) // There is no such day in the month.
        return std::nullopt;
    if (rest.empty())
        return WrittenTime{time, std::nullopt};
    if (rest == "UTC" || rest == "GMT")
        return TimeAt(time);
    std::tm zone{};
    std::string const text(rest);
    char const* const end = strptime(text.c_str(), "%z", &zone);
    return end != nullptr && *end == '\0' ? TimeAt(time - zone.tm_gmtoff) : std::nullopt;
}

std::optional<WrittenTime> ReadAs(char const* text, char const* format) {
    std::tm parts{};
    char const* const rest = strptime(text, format, &parts);
    return rest != nullptr ? WithRest(parts, rest) : std::nullopt;
}

} // namespace

Moment MomentAt(Instant instant) {
    return {instant, ShownAt(instant).value_or(instant)};
}

Instants InstantsOf(CallTime shown) {
    constexpr Instant kDay = Instant{24} * 3600; // Farther than any zone is from UTC.
    auto const withOffsetAt = [shown](Instant instant) {
        return shown - (MomentAt(instant).shown - instant);
    };
    Instant const before = withOffsetAt(shown - kDay);
    Instant const after = withOffsetAt(shown + kDay);
    bool const isBefore = MomentAt(before).shown == shown;
    if (isBefore != (MomentAt(after).shown == shown))
        return isBefore ? Instants{before, before} : Instants{after, after};
    return {std::min(before, after), std::max(before, after)};
}

std::optional<WrittenTime> ReadCallTime(std::string const& text) {
    if (text.empty())
        return std::nullopt;
    if (auto const time = ReadUsual(text))
        return WrittenTime{*time, std::nullopt};
    if (auto const time = ReadSince1970(text))
        return time;
    constexpr char const* kFormats[] = {
        "%Y-%m-%d %H:%M:%S", "%Y-%m-%dT%H:%M:%S", "%Y/%m/%d %H:%M:%S", "%d.%m.%Y %H:%M:%S",
        "%Y-%m-%d %H:%M",    "%Y-%m-%dT%H:%M",    "%Y/%m/%d %H:%M",    "%d.%m.%Y %H:%M",
        "%Y%m%d%H%M%S",      "%Y-%m-%d",          "%Y/%m/%d",          "%d.%m.%Y"};
    for (char const* const format : kFormats)
        if (auto const time = ReadAs(text.c_str(), format))
            return time;
    return std::nullopt;
}

std::optional<WrittenTime> ReadCallTimeAs(std::string const& text, std::string const& format) {
    return ReadAs(text.c_str(), format.c_str());
}

bool UseZone(std::string const& zone) {
    bool const hasSign = !zone.empty() && (zone[0] == '+' || zone[0] == '-');
    std::tm parts{};
    char const* const end = hasSign ? strptime(zone.c_str(), "%z", &parts) : nullptr;
    std::string name = zone;
    if (end != nullptr && *end == '\0') {
        // POSIX counts the other way round: what is to be added to get UTC.
        long const minutes = std::labs(parts.tm_gmtoff) / 60;
        name = fmt::format("<{0}{1:02}{2:02}>{3}{1:02}:{2:02}", zone[0], minutes / 60, minutes % 60,
                           zone[0] == '+' ? '-' : '+');
    } else {
        // The C library takes any other name for UTC.
        std::error_code error;
        if (zone.empty() || zone[0] == '/' || zone.find("..") != std::string::npos ||
            !std::filesystem::is_regular_file("/usr/share/zoneinfo/" + zone, error))
            return false;
    }
    setenv("TZ", name.c_str(), 1);
    tzset();
    return true;
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
